// Loaded before the C library, it leaves a program without a thread to start.
#include <pthread.h>

#include <cerrno>

extern "C" int pthread_create(pthread_t* /*thread*/, const pthread_attr_t* /*attributes*/,
                              void* (* /*routine*/)(void*), void* /*argument*/) noexcept {
  return EAGAIN;
}
