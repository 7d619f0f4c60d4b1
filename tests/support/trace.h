// A piece of work in a child process that is killed at one of its system calls, or has one of them fail.
#ifndef TESTS_SUPPORT_TRACE_H
#define TESTS_SUPPORT_TRACE_H

#include <sys/mman.h>

#include <functional>
#include <memory>
#include <new>
#include <string>

// What befalls the nth call from 1 among those that the filter takes; with an nth that is never reached the work runs
// to its end. To be killed at the exit of a call would leave no more than to be killed at the entry of the next.
struct TracePlan {
    int nth;
    int error; // the call gives it and is not executed, but for close, which closes all the same; 0: the child is
               // killed
    bool (*takes)(long call); // NULL: all
};

struct TraceOutcome {
    bool reached; // the nth call was met
    long call;    // the number of the nth
    int exitCode; // what the work returned, -1 for a killed child
};

// Between these two calls of the work its system calls count.
void TraceBegin();
void TraceEnd();

// Forks, runs the work and waits for its end. The child leaves by _exit.
TraceOutcome Trace(const std::function<int()> &work, const TracePlan &plan);

// Why there is no tracing here; empty if there is.
std::string TraceHindrance();

// Filters: calls about files, and those of them that a signal can interrupt.
bool TakesFileCall(long call);
bool TakesInterruptibleCall(long call);

// Forks, runs the work untraced, waits. What it returned, or -1 when it was killed.
int InOtherProcess(const std::function<int()> &work);

template <typename Record>
struct Unmap {
    void operator()(Record *record) const
    {
        munmap(record, sizeof(Record));
    }
};

// A record that forked processes share.
template <typename Record>
struct Shared : std::unique_ptr<Record, Unmap<Record>> {
    Shared()
    {
        constexpr int kProtection = PROT_READ | PROT_WRITE, kFlags = MAP_SHARED | MAP_ANONYMOUS;
        this->reset(new (mmap(nullptr, sizeof(Record), kProtection, kFlags, -1, 0)) Record());
    }
};

#endif
