// The words of a process-shared mutex, which tell who holds it. Only this file depends on the
// layouts of the C libraries.
//
//             glibc                           musl, recursive            musl, plain
//   free      __lock 0                        word 0                     word 0
//   held      __lock 1 or 2, __owner: thread  word: thread               word 16
//   no owner  __lock 1 or 2, __owner 0: its   never                      always
//   named     holder locks or unlocks it now
//   died      as held                         bit 30, by the kernel      as held
//
// A recursive mutex counts how often its holder has locked it: from 1 in glibc, from 0 in musl.
#ifndef SHARED_MEMORY_MUTEX_WORDS_H
#define SHARED_MEMORY_MUTEX_WORDS_H

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <type_traits>

namespace core_utils {

struct sMutexHolder {
    bool isLocked = false;
    bool isDead = false;  // the kernel has marked the mutex
    pid_t thread = 0;     // 0 if the mutex names no owner
    int word = 0;         // the word that names the owner, as it was read
};

// Any other C library: the layout is unknown, and no lock can be taken over.
template <typename Mutex, typename = void>
struct sMutexWords {
    static constexpr bool ARE_KNOWN = false;
    static sMutexHolder holderOf(const Mutex&) { return {}; }
    static bool claim(Mutex&, const sMutexHolder&, pid_t) { return false; }
    static bool isNested(const Mutex&) { return false; }
    static void release(Mutex&) {}
};

template <typename Word>
bool change(Word& word, int from, int to) {
    return __atomic_compare_exchange_n(&word, &from, to, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
}

inline void releaseWord(int* word) {
    constexpr int WAKE = 1;  // FUTEX_WAKE of a kernel's header that a small C library comes without
    __atomic_exchange_n(word, 0, __ATOMIC_SEQ_CST);
    syscall(SYS_futex, word, WAKE, 1, nullptr, nullptr, 0);
}

// glibc. An overload chooses, as musl defines no macro to tell it by.
template <typename Mutex>
struct sMutexWords<Mutex, std::enable_if_t<sizeof(Mutex::__data) != 0>> {
    static constexpr bool ARE_KNOWN = true;

    static sMutexHolder holderOf(const Mutex& mutex) {
        sMutexHolder holder;
        holder.isLocked = __atomic_load_n(&mutex.__data.__lock, __ATOMIC_ACQUIRE) != 0;
        holder.word = __atomic_load_n(&mutex.__data.__owner, __ATOMIC_ACQUIRE);
        holder.thread = holder.word;
        return holder;
    }

    // Makes `thread` the owner in place of a dead holder. Of several threads that try, one
    // succeeds.
    static bool claim(Mutex& mutex, const sMutexHolder& holder, pid_t thread) {
        if (!change(mutex.__data.__owner, holder.word, thread)) return false;
        // The holder that was not named has unlocked it in the meantime: nobody has died.
        return holder.word != 0 || holderOf(mutex).isLocked ||
               !change(mutex.__data.__owner, thread, 0);
    }

    // True if a recursive mutex counts more locks than the one that its holder has just taken.
    static bool isNested(const Mutex& mutex) { return mutex.__data.__count != 1; }

    // Unlocks a mutex that was claimed.
    static void release(Mutex& mutex) {
        mutex.__data.__count = 0;
        __atomic_store_n(&mutex.__data.__owner, 0, __ATOMIC_RELEASE);
        releaseWord(&mutex.__data.__lock);
    }
};

// musl.
template <typename Mutex>
struct sMutexWords<Mutex, std::enable_if_t<sizeof(Mutex::__u.__vi) != 0>> {
    static constexpr bool ARE_KNOWN = true;
    static constexpr int TYPE = 0, WORD = 1, COUNT = 5;
    static constexpr int TYPE_MASK = 15;
    static constexpr int THREAD_MASK = 0x3FFFFFFF, DIED = 0x40000000;
    static constexpr unsigned int WAITERS = 0x80000000U;

    static bool isPlain(const Mutex& mutex) { return (mutex.__u.__vi[TYPE] & TYPE_MASK) == 0; }

    static sMutexHolder holderOf(const Mutex& mutex) {
        sMutexHolder holder;
        holder.word = __atomic_load_n(&mutex.__u.__vi[WORD], __ATOMIC_ACQUIRE);
        holder.isLocked = holder.word != 0;
        if (isPlain(mutex)) return holder;
        holder.thread = holder.word & THREAD_MASK;
        holder.isDead = holder.thread == 0 && (holder.word & DIED) != 0;
        return holder;
    }

    // The word of a plain mutex cannot name an owner. The heap's mutex is plain; only the holder of
    // the segment's lock claims it, so there is no second claimant.
    static bool claim(Mutex& mutex, const sMutexHolder& holder, pid_t thread) {
        if (isPlain(mutex)) return true;
        const auto waiters = static_cast<unsigned int>(holder.word) & WAITERS;
        return change(mutex.__u.__vi[WORD], holder.word,
                      static_cast<int>(static_cast<unsigned int>(thread) | waiters));
    }

    static bool isNested(const Mutex& mutex) { return mutex.__u.__vi[COUNT] != 0; }

    static void release(Mutex& mutex) {
        mutex.__u.__vi[COUNT] = 0;
        releaseWord(const_cast<int*>(&mutex.__u.__vi[WORD]));
    }
};

}  // namespace core_utils

#endif
