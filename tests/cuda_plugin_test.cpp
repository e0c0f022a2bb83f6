// The CUDA plugin as far as a machine without a GPU can show it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/registry.h"
#include "platform/table.h"

namespace {

class CudaPlugin : public ::testing::Test {
  protected:
    void SetUp() override {
        plugin_ = dlopen(LUMO_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, plugin_) << dlerror();
        auto tableOf =
            reinterpret_cast<platform::TableFunction>(dlsym(plugin_, "lumoPlatformTable"));
        ASSERT_NE(nullptr, tableOf);
        EXPECT_EQ(nullptr, tableOf(platform::tableVersion + 1));
        table_ = tableOf(platform::tableVersion);
        ASSERT_NE(nullptr, table_);
    }

    void* plugin_ = nullptr;
    const platform::Table* table_ = nullptr;
};

// Each kernel that the library registers is in the plugin under the same name, and no others.
TEST_F(CudaPlugin, HasTheLibrarysKernels) {
    using Visit = void (*)(void*, const char*);
    auto visitKernels =
        reinterpret_cast<void (*)(Visit, void*)>(dlsym(plugin_, "lumoPlatformKernels"));
    ASSERT_NE(nullptr, visitKernels);
    std::set<std::string> inPlugin, inLibrary;
    visitKernels([](void* names,
                    const char* name) { static_cast<std::set<std::string>*>(names)->insert(name); },
                 &inPlugin);
    for (const platform::Kernel* kernel : platform::registeredKernels())
        inLibrary.insert(kernel->name);
    EXPECT_GT(inLibrary.size(), 100u);
    for (const std::string& name : inLibrary)
        EXPECT_TRUE(inPlugin.count(name)) << "not in the plugin: " << name;
    for (const std::string& name : inPlugin)
        EXPECT_TRUE(inLibrary.count(name)) << "not in the library: " << name;
}

TEST_F(CudaPlugin, TableIsComplete) {
    // Every entry behind the name is a function pointer, up to those that it may leave to the
    // library.
    const auto* entry = reinterpret_cast<void* const*>(&table_->runtimeGetVersion);
    const auto* end = reinterpret_cast<void* const*>(&table_->luPanel);
    for (int i = 0; entry < end; ++entry, ++i) EXPECT_NE(nullptr, *entry) << "entry " << i;
}

// The numbers that the library interprets are those of CUDA 3, and have their texts.
TEST_F(CudaPlugin, SpeaksCuda3Errors) {
    EXPECT_STREQ("out of memory", table_->getErrorString(2));
    EXPECT_STREQ("unspecified launch failure", table_->getErrorString(4));
    EXPECT_STREQ("invalid argument", table_->getErrorString(11));
    EXPECT_STREQ("no CUDA-capable device is detected", table_->getErrorString(38));
    EXPECT_NE(std::string(table_->getErrorString(32)).find("too large"), std::string::npos);
    // A launch that was not configured, of a kernel that does not exist.
    const platform::Kernel unknown{"no such kernel", nullptr, nullptr};
    EXPECT_EQ(1, table_->launch(&unknown, 0));
    EXPECT_EQ(1, table_->getLastError());
    EXPECT_EQ(0, table_->getLastError());
    EXPECT_EQ(0, table_->configureCall({1, 1, 1}, {1, 1, 1}, 0, nullptr));
    EXPECT_EQ(8, table_->launch(&unknown, 0));
    EXPECT_EQ(8, table_->getLastError());
}

TEST_F(CudaPlugin, AnswersWithoutADriver) {
    if (void* driver = dlopen("libcuda.so.1", RTLD_LAZY)) {
        dlclose(driver);
        GTEST_SKIP() << "this machine has a driver";
    }
    int value = -1;
    EXPECT_EQ(0, table_->runtimeGetVersion(&value));
    EXPECT_GE(value, 12000);
    EXPECT_EQ(0, table_->driverGetVersion(&value));
    EXPECT_EQ(0, value);
    EXPECT_EQ(35, table_->getDeviceCount(&value));
    EXPECT_EQ(35, table_->getLastError());
    EXPECT_EQ(35, table_->setDevice(0));
    EXPECT_EQ(0, table_->threadSynchronize());
    void* pointer = &value;
    EXPECT_NE(0, table_->malloc(&pointer, 16));
    EXPECT_EQ(nullptr, pointer);
    EXPECT_NE(0, table_->cublasInit());
    float one = 1;
    table_->platform::Blas<float>::trsm('L', 'L', 'N', 'N', 1, 1, 1, &one, 1, &one, 1);
    EXPECT_EQ(0, table_->cublasGetError()) << "it is not CUBLAS that fails";
    EXPECT_EQ(35, table_->getLastError());
    table_->platform::Blas<float>::trsm('X', 'L', 'N', 'N', 1, 1, 1, &one, 1, &one, 1);
    EXPECT_EQ(7, table_->cublasGetError());
    EXPECT_EQ(0, table_->cublasGetError());
}

}  // namespace
