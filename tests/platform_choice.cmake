# The choice of the platform: a program that tells it, run with drivers and plugins of all kinds.
add_executable(platform_probe platform_probe.cpp)
target_link_libraries(platform_probe PRIVATE lumo_objects)
add_library(fake_plugin MODULE fake_plugin.cpp)
target_include_directories(fake_plugin PRIVATE ${PROJECT_SOURCE_DIR})
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/fake_driver.c "int fakeDriver;\n")
add_library(fake_driver SHARED ${CMAKE_CURRENT_BINARY_DIR}/fake_driver.c)
set_target_properties(fake_driver PROPERTIES OUTPUT_NAME cuda SOVERSION 1
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/driver)
# A driver library that does not load stands in the way of one that the machine may have.
set(not_a_library ${CMAKE_CURRENT_BINARY_DIR}/no_driver/libcuda.so.1)
file(WRITE ${not_a_library} "not a library\n")

# lumo_platform_test(NAME DRIVER|NO_DRIVER expected-output variables...)
function(lumo_platform_test name driver expected)
    add_test(NAME platform_choice.${name} COMMAND platform_probe)
    set(folder $<TARGET_FILE_DIR:fake_driver>)
    if(driver STREQUAL NO_DRIVER)
        set(folder ${CMAKE_CURRENT_BINARY_DIR}/no_driver)
    endif()
    set_tests_properties(platform_choice.${name} PROPERTIES
        LABELS unit TIMEOUT 60
        PASS_REGULAR_EXPRESSION "${expected}" FAIL_REGULAR_EXPRESSION "Sanitizer"
        ENVIRONMENT "LUMO_PLATFORM=;LUMO_CUDA_PLUGIN=$<TARGET_FILE:fake_plugin>;LD_LIBRARY_PATH=${folder};${ARGN}")
endfunction()

set(well "count 1: status 0 info 0, initialize: status 0 info 0")
set(refused "count -1: status 10 info 35, initialize: status 3 info 0")
lumo_platform_test(no_driver NO_DRIVER "^.software. .no NVIDIA driver. ${well}")
lumo_platform_test(no_plugin DRIVER "^.software. .the CUDA plugin is not installed .* ${well}"
    LUMO_CUDA_PLUGIN=${CMAKE_CURRENT_BINARY_DIR}/nothing.so)
lumo_platform_test(device DRIVER "^.cuda. .an NVIDIA driver and a device. ${well}")
lumo_platform_test(no_device DRIVER "^.software. .*no device. ${well}" FAKE_DEVICES=0)
lumo_platform_test(no_device_error DRIVER "^.software. .*no device. ${well}" FAKE_COUNT_ERROR=38)
lumo_platform_test(old_driver DRIVER "^.cuda. .*fake error. .*initialize: status 3 info 0"
    FAKE_COUNT_ERROR=35 FAKE_DRIVER_VERSION=12000)
lumo_platform_test(broken_driver DRIVER "^.cuda. .*fake error. .*initialize: status 10 info 30"
    FAKE_COUNT_ERROR=30)
lumo_platform_test(panels DRIVER "^.none. .LUMO_PANELS=gpu names no panels .cpu, device.. ${refused}" LUMO_PANELS=gpu)
lumo_platform_test(software DRIVER "^.software. .LUMO_PLATFORM=software. ${well}"
    LUMO_PLATFORM=software)
lumo_platform_test(cuda DRIVER "^.cuda. .LUMO_PLATFORM=cuda. ${well}" LUMO_PLATFORM=cuda)
lumo_platform_test(cuda_no_device DRIVER
    "^.cuda. .* count 0: status 0 info 0, initialize: status 2 info 0"
    LUMO_PLATFORM=cuda FAKE_DEVICES=0)
lumo_platform_test(cuda_no_driver NO_DRIVER "^.none. .*no NVIDIA driver. ${refused}"
    LUMO_PLATFORM=cuda)
lumo_platform_test(cuda_no_plugin DRIVER "^.none. .*not installed .* ${refused}"
    LUMO_PLATFORM=cuda LUMO_CUDA_PLUGIN=${CMAKE_CURRENT_BINARY_DIR}/nothing.so)
lumo_platform_test(unknown DRIVER "^.none. .LUMO_PLATFORM=gpu names no platform.*${refused}\nCUDA Error: .* version: LUMO_PLATFORM=gpu names.* .see .*supported: LUMO_PLATFORM=gpu names no platform"
    LUMO_PLATFORM=gpu)
lumo_platform_test(other_version DRIVER "^.none. .*built for another version.*${refused}"
    FAKE_TABLE_VERSION=0)
lumo_platform_test(bad_plugin DRIVER "^.none. .the CUDA plugin does not load.*${refused}"
    LUMO_CUDA_PLUGIN=${not_a_library})
