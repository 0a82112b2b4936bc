#include <morvantis/platform/system/lock.h>

#include <new>
#include <pthread.h>

static_assert(sizeof(pthread_mutex_t) == os::lock_size);
static_assert(alignof(pthread_mutex_t) == os::lock_alignment);

// glibc's recursive mutex has no spin count.
void os::create_lock(void* storage, int) {
	pthread_mutexattr_t attributes;
	pthread_mutexattr_init(&attributes);
	pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
	pthread_mutex_init(new (storage) pthread_mutex_t, &attributes);
	pthread_mutexattr_destroy(&attributes);
}

void os::destroy_lock(void* storage) {
	pthread_mutex_destroy(static_cast<pthread_mutex_t*>(storage));
}

void os::enter_lock(void* storage) { pthread_mutex_lock(static_cast<pthread_mutex_t*>(storage)); }

void os::leave_lock(void* storage) { pthread_mutex_unlock(static_cast<pthread_mutex_t*>(storage)); }
