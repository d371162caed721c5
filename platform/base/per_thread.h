#pragma once
// What each thread has for itself.

#include <pthread.h>

#include <memory>
#include <new>

namespace quennet {

/// One object for each thread that asks for it. It ends with its thread; that of the thread which
/// ends the process just stays. For objects with a destructor: the runtime ends the process when
/// it has no memory to note that of a thread_local one, and here that is a failure like others.
template <typename Object>
class PerThread {
  public:
    PerThread() : hasKey_(pthread_key_create(&key_, Delete) == 0) {}

    /// The calling thread's object, null when it has none.
    Object* Find() const {
        return hasKey_ ? static_cast<Object*>(pthread_getspecific(key_)) : nullptr;
    }

    /// The calling thread's object, made when there is none yet. Throws std::bad_alloc.
    Object& Get() const {
        if (Object* const known = Find()) {
            return *known;
        }
        auto object = std::make_unique<Object>();
        if (!hasKey_ || pthread_setspecific(key_, object.get()) != 0) {
            throw std::bad_alloc();
        }
        return *object.release();
    }

  private:
    static void Delete(void* object) { delete static_cast<Object*>(object); }

    pthread_key_t key_ = 0;
    bool hasKey_;
};

}  // namespace quennet
