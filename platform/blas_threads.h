// The threads of the CPU BLAS. The software device hands its work out itself: the CPU library is to
// use the calling thread alone, since the narrow products of a hybrid algorithm would wait for
// threads that spin, or that a busy machine does not run.
#pragma once

namespace platform {

// The CPU library computes on one thread while any of these lives. What an application has set
// comes back with the last one, unless somebody has set another number meanwhile. Libraries whose
// switch is not known are left alone.
class OneBlasThread {
  public:
    OneBlasThread();
    ~OneBlasThread();
    OneBlasThread(const OneBlasThread&) = delete;
    OneBlasThread& operator=(const OneBlasThread&) = delete;

  private:
    bool counted_ = false;
    int saved_ = 0;  // where the number is the thread's own
};

// How many threads the CPU library may use at present, 0 if it is not known.
int blasThreads();

}  // namespace platform
