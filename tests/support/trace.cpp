#include "support/trace.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __x86_64__
#include <sys/reg.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

constexpr unsigned long kBeginMark = 0x51a7e0;
constexpr unsigned long kEndMark = 0x51a7e1;

// The first words of the kernel's records, and where in them the call, its first argument and its result are.
using Registers = std::array<unsigned long, 64>;
#if defined(__x86_64__)
constexpr size_t kCall = ORIG_RAX, kArgument = RDI, kResult = RAX;
#elif defined(__aarch64__)
constexpr size_t kCall = 8, kArgument = 0, kResult = 0;
#else
constexpr size_t kCall = 0, kArgument = 0, kResult = 0; // no mark is met: there is no tracing
#endif

bool MoveRegisters(__ptrace_request request, pid_t child, Registers &registers)
{
    iovec place = {registers.data(), sizeof registers};
    return ptrace(request, child, NT_PRSTATUS, &place) == 0;
}

bool LeaveOut(pid_t child, Registers &registers)
{
#ifdef __aarch64__
    int none = -1;
    iovec place = {&none, sizeof none};
    return ptrace(PTRACE_SETREGSET, child, NT_ARM_SYSTEM_CALL, &place) == 0;
#else
    registers[kCall] = static_cast<unsigned long>(-1);
    return MoveRegisters(PTRACE_SETREGSET, child, registers);
#endif
}

// ---- The traced child ----

class Tracee {
public:
    Tracee(pid_t child, const TracePlan &plan) : child_(child), plan_(plan) {}

    TraceOutcome Follow()
    {
        Wait();
        if (!ended_)
            ptrace(PTRACE_SETOPTIONS, child_, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        while (!ended_ && !outcome_.reached && NextStop())
            Enter();
        if (!ended_) {
            ptrace(PTRACE_DETACH, child_, 0, 0);
            Wait();
        }
        return outcome_;
    }

private:
    // On to the next entry or exit of a system call. False when the child has ended.
    bool NextStop()
    {
        constexpr int kSystemCall = SIGTRAP | 0x80;
        for (int signal = 0;; signal = WSTOPSIG(status_)) {
            if (ptrace(PTRACE_SYSCALL, child_, 0, signal) != 0)
                Kill();
            else
                Wait();
            if (ended_ || WSTOPSIG(status_) == kSystemCall)
                return !ended_;
        }
    }

    void Enter()
    {
        Registers registers;
        if (!MoveRegisters(PTRACE_GETREGSET, child_, registers))
            return Kill();
        const auto call = static_cast<long>(registers[kCall]);
        if (call == SYS_getppid)
            counting_ = registers[kArgument] == kBeginMark || (counting_ && registers[kArgument] != kEndMark);
        else if (counting_ && (plan_.takes == nullptr || plan_.takes(call)) && ++calls_ == plan_.nth)
            return Act(call, registers);
        NextStop();
    }

    void Act(long call, Registers &registers)
    {
        outcome_.reached = true;
        outcome_.call = call;
        if (plan_.error == 0 || (call != SYS_close && !LeaveOut(child_, registers)))
            return Kill();
        if (!NextStop())
            return;
        const bool known = MoveRegisters(PTRACE_GETREGSET, child_, registers);
        registers[kResult] = static_cast<unsigned long>(-plan_.error);
        if (!known || !MoveRegisters(PTRACE_SETREGSET, child_, registers))
            Kill();
    }

    void Kill()
    {
        kill(child_, SIGKILL);
        while (!ended_)
            Wait();
    }

    void Wait()
    {
        while (waitpid(child_, &status_, __WALL) < 0 && errno == EINTR) {
        }
        ended_ = !WIFSTOPPED(status_);
        if (ended_)
            outcome_.exitCode = WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }

    pid_t child_;
    const TracePlan &plan_;
    TraceOutcome outcome_ = {false, -1, -1};
    int calls_ = 0;
    int status_ = 0;
    bool counting_ = false;
    bool ended_ = false;
};

constexpr long kMemoryAndTimeCalls[] = {
    SYS_brk,         SYS_mmap,           SYS_munmap,       SYS_mprotect,  SYS_mremap,        SYS_madvise,
    SYS_futex,       SYS_rt_sigprocmask, SYS_rt_sigaction, SYS_nanosleep, SYS_clock_gettime, SYS_clock_nanosleep,
    SYS_sched_yield, SYS_getrandom,      SYS_getpid,       SYS_gettid,    SYS_sigaltstack,   SYS_rt_sigreturn,
};

constexpr long kInterruptibleCalls[] = {
    SYS_read, SYS_write, SYS_pread64, SYS_pwrite64, SYS_openat, SYS_fcntl, SYS_close,
#ifdef SYS_open
    SYS_open,
#endif
};

} // namespace

void TraceBegin()
{
    (void)syscall(SYS_getppid, kBeginMark);
}

void TraceEnd()
{
    (void)syscall(SYS_getppid, kEndMark);
}

TraceOutcome Trace(const std::function<int()> &work, const TracePlan &plan)
{
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, 0, 0) != 0)
            _exit(errno);
        (void)raise(SIGSTOP);
        _exit(work());
    }
    return Tracee(child, plan).Follow();
}

std::string TraceHindrance()
{
    static const std::string reason = [] {
        constexpr int kUnlike = 77; // no call ever fails so
        const auto work = [] {
            TraceBegin();
            const int result = access("/", F_OK) == 0 ? 0 : errno;
            TraceEnd();
            return result;
        };
        const TraceOutcome outcome = Trace(work, {1, kUnlike, TakesFileCall});
        if (outcome.reached && outcome.exitCode == kUnlike)
            return std::string();
        return "the kernel does not let a child be traced: " + std::string(strerror(std::max(outcome.exitCode, 0)));
    }();
    return reason;
}

bool TakesFileCall(long call)
{
    return std::ranges::find(kMemoryAndTimeCalls, call) == std::end(kMemoryAndTimeCalls);
}

bool TakesInterruptibleCall(long call)
{
    return std::ranges::find(kInterruptibleCalls, call) != std::end(kInterruptibleCalls);
}

int InOtherProcess(const std::function<int()> &work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
