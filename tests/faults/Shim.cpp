#include "faults/Faults.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <type_traits>

#include <asm/socket.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/types.h>

// Each function is defined under another name; only its assembler name is that of the C library. So
// it does not conflict with the headers' declarations, their inline versions and noexcept.

extern "C" long syscall(long number, ...);
extern "C" unsigned alarm(unsigned seconds);

using faults::Verdict;

std::atomic<long> faults::blocksHeld{0};

namespace {

constexpr unsigned MOST_CALLS = 4096;
char s_trace[MOST_CALLS][112];
std::atomic<unsigned> s_count{0};
std::atomic<bool> s_isCounting{false};
faults::Plan s_plan;
std::atomic<unsigned> s_countOfName{0}; ///< calls of the plan's name

bool isSame(const char* name, const char* other) {
    return std::strcmp(name, other) == 0;
}

Verdict judge(const char* name, const char* path) {
    return faults::judge(name, path);
}

Verdict judge(const char* name, int descriptor) {
    constexpr int LAST_STANDARD_DESCRIPTOR = 2;
    if (!s_isCounting || (descriptor >= 0 && descriptor <= LAST_STANDARD_DESCRIPTOR))
        return Verdict::PASS;
    char link[32];
    char file[100] = {};
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    ::syscall(SYS_readlinkat, -1, link, file, sizeof file - 1); // readlink would be counted
    return faults::judge(name, file);
}

/// How many of `count` bytes a call moves.
template <class Count>
Count moved(Verdict verdict, Count count) {
    const auto most = static_cast<Count>(s_plan.error - faults::KILLED);
    if (verdict == Verdict::KILL && count > most)
        return most;
    return verdict == Verdict::SHORT && count > 1 ? 1 : count;
}

template <class Result>
Result orDie(Verdict verdict, Result result) {
    if (verdict == Verdict::KILL)
        ::raise(SIGKILL);
    return result;
}

/// The subject of an open: the path, and whether the file may be changed.
const char* opened(const char* path, bool mayWrite) {
    thread_local char subject[104];
    std::snprintf(subject, sizeof subject, "%s%s", path, mayWrite ? " for writing" : "");
    return subject;
}

const char* opened(const char* path, int flags) {
    return opened(path, (flags & (O_ACCMODE | O_CREAT | O_TRUNC)) != O_RDONLY);
}

const char* opened(const char* path, const char* how) {
    return opened(path, std::strpbrk(how, "wa+") != nullptr);
}

template <class Result>
constexpr Result failure() {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return -1;
}

} // namespace

void faults::begin(const Plan& plan) {
    s_plan = plan;
    s_count = 0;
    s_countOfName = 0;
    s_isCounting = true;
}

void faults::end() {
    s_isCounting = false;
}

std::vector<std::string> faults::trace() {
    const unsigned count = s_count;
    return {s_trace, s_trace + (count < MOST_CALLS ? count : MOST_CALLS)};
}

Verdict faults::judge(const char* name, const char* file) {
    if (!s_isCounting)
        return Verdict::PASS;
    const int kept = errno;
    const unsigned number = ++s_count;
    if (number <= MOST_CALLS)
        std::snprintf(s_trace[number - 1], sizeof s_trace[0], "%s %s", name, file);
    errno = kept;
    const bool isNamed = isSame(name, s_plan.name);
    const unsigned ofName = isNamed ? ++s_countOfName : s_countOfName.load();
    const bool isPlanned = isNamed && ofName == s_plan.call;
    if (!isPlanned &&
        (s_plan.error >= 0 || ofName < s_plan.call || !(isNamed || isSame(name, "unlink"))))
        return Verdict::PASS;
    if (s_plan.error == 0)
        return Verdict::SHORT;
    if (s_plan.error >= KILLED)
        return Verdict::KILL;
    errno = std::abs(s_plan.error);
    return Verdict::FAIL;
}

// NOLINTBEGIN(bugprone-macro-parentheses)

/// Replaces the C library's `name`; `real` is the original. `subject` is the path or descriptor
/// that the call works on. The last argument is a statement that runs before the call or failure.
#define CALL(Result, name, parameters, arguments, subject, ...)                                    \
    extern "C" __attribute__((visibility("default")))                                              \
    Result faulty_##name parameters __asm__(#name);                                                \
    Result faulty_##name parameters {                                                              \
        static const auto real = reinterpret_cast<Result(*) parameters>(                           \
            ::dlsym(RTLD_NEXT, #name)); /* NOLINT(bugprone-reserved-identifier) */                 \
        const Verdict verdict = judge(#name, subject);                                             \
        __VA_ARGS__;                                                                               \
        return verdict == Verdict::FAIL ? failure<Result>()                                        \
                                        : orDie<Result>(verdict, real arguments);                  \
    }

#define MOVES count = moved(verdict, count)
// A close releases the descriptor even if it fails.
#define CLOSES errno = verdict == Verdict::FAIL ? (real(fd), std::abs(s_plan.error)) : errno

// If the caller passes no mode, that parameter holds garbage, which the original does not use.
CALL(int, open, (const char* path, int flags, mode_t mode), (path, flags, mode),
     opened(path, flags), )
CALL(int, open64, (const char* path, int flags, mode_t mode), (path, flags, mode),
     opened(path, flags), )
CALL(int, openat, (int at, const char* path, int flags, mode_t mode), (at, path, flags, mode),
     opened(path, flags), )
// Optimized programs call these instead of open if the compiler does not know the flags.
CALL(int, __open_2, (const char* path, int flags), (path, flags), opened(path, flags), )
CALL(int, __open64_2, (const char* path, int flags), (path, flags), opened(path, flags), )
CALL(std::FILE*, fopen, (const char* path, const char* how), (path, how), opened(path, how), )
CALL(std::FILE*, fopen64, (const char* path, const char* how), (path, how), opened(path, how), )
CALL(ssize_t, read, (int fd, void* to, size_t count), (fd, to, count), fd, MOVES)
CALL(ssize_t, __read_chk, (int fd, void* to, size_t count, size_t), (fd, to, count, count), fd,
     MOVES)
CALL(ssize_t, pread, (int fd, void* to, size_t count, off_t at), (fd, to, count, at), fd, MOVES)
CALL(ssize_t, write, (int fd, const void* from, size_t count), (fd, from, count), fd, MOVES)
CALL(ssize_t, pwrite, (int fd, void* from, size_t count, off_t at), (fd, from, count, at), fd,
     MOVES)
CALL(ssize_t, writev, (int fd, const void* parts, int count), (fd, parts, count), fd, MOVES)
CALL(char*, fgets, (char* text, int size, std::FILE* fd), (text, size, fd), ::fileno(fd), )
CALL(int, close, (int fd), (fd), fd, CLOSES)
CALL(int, fclose, (std::FILE * fd), (fd), ::fileno(fd), CLOSES)
CALL(int, fsync, (int fd), (fd), fd, )
CALL(int, fchmod, (int fd, mode_t mode), (fd, mode), fd, )
CALL(int, fchown, (int fd, uid_t owner, gid_t group), (fd, owner, group), fd, )
CALL(int, flock, (int fd, int operation), (fd, operation), fd, )
CALL(int, fstat, (int fd, void* status), (fd, status), fd, )
CALL(int, stat, (const char* path, void* status), (path, status), path, )
CALL(int, access, (const char* path, int mode), (path, mode), path, )
CALL(int, rename, (const char* from, const char* to), (from, to), from, )
CALL(int, unlink, (const char* path), (path), path, )
CALL(int, chmod, (const char* path, mode_t mode), (path, mode), path, )
CALL(int, mkdir, (const char* path, mode_t mode), (path, mode), path, )
CALL(int, mkfifo, (const char* path, mode_t mode), (path, mode), path, )
CALL(int, mknod, (const char* path, mode_t mode, dev_t device), (path, mode, device), path, )
CALL(int, mkostemp, (char* path, int flags), (path, flags), path, )
CALL(char*, mkdtemp, (char* path), (path), path, )
CALL(int, eventfd, (unsigned count, int flags), (count, flags), "eventfd", )
CALL(int, socket, (int domain, int type, int protocol), (domain, type, protocol), "socket", )
CALL(int, bind, (int fd, const void* address, unsigned size), (fd, address, size), fd, )
CALL(int, listen, (int fd, int backlog), (fd, backlog), fd, )
CALL(int, accept4, (int fd, void* address, void* size, int flags), (fd, address, size, flags), fd, )
CALL(int, epoll_create1, (int flags), (flags), "epoll", )
CALL(int, epoll_ctl, (int fd, int operation, int which, void* event), (fd, operation, which, event),
     fd, )
CALL(int, epoll_wait, (int fd, void* events, int most, int ms), (fd, events, most, ms), fd, )

// NOLINTEND(bugprone-macro-parentheses)

#ifdef FAULTS_PRELOADED

namespace {

constexpr unsigned PATIENCE_SECONDS = 20;
constexpr long SECOND = 1000000000;
std::atomic<long> s_leapt{0}; ///< how far the program's time is ahead, in nanoseconds

__attribute__((constructor)) void beginAsTheEnvironmentSays() {
    static char name[16];
    faults::Plan plan{name, 0, 0};
    ::alarm(PATIENCE_SECONDS); // ends a program that hangs, by a signal that no test accepts
    if (std::sscanf(std::getenv("FAULTS_PLAN"), "%15s %u %d", name, &plan.call, &plan.error) == 3)
        faults::begin(plan);
}

__attribute__((destructor)) void writeTrace() {
    faults::end();
    std::FILE* const file = std::fopen(std::getenv("FAULTS_TRACE"), "w");
    for (const std::string& call : faults::trace())
        std::fprintf(file, "%s\n", call.c_str());
    std::fclose(file);
}

} // namespace

// Unlike the functions above, this returns its error and does not set errno.
extern "C" __attribute__((visibility("default"))) int
faulty_pthread_create(void* thread, const void* how, void* (*body)(void*),
                      void* argument) __asm__("pthread_create");
int faulty_pthread_create(void* thread, const void* how, void* (*body)(void*), void* argument) {
    static const auto real =
        reinterpret_cast<decltype(&faulty_pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    const Verdict verdict = judge("pthread_create", "thread");
    return verdict == Verdict::FAIL ? errno : orDie(verdict, real(thread, how, body, argument));
}

// No real time passes while the program waits: its clock leaps to the end of the wait. Only waits
// for sockets are real, because another program answers there.

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* now) noexcept {
    const long result = ::syscall(SYS_clock_gettime, clock, now);
    const long sum = now->tv_nsec + (clock == CLOCK_MONOTONIC ? s_leapt.load() : 0);
    now->tv_sec += sum / SECOND;
    now->tv_nsec = sum % SECOND;
    return static_cast<int>(result);
}

namespace {

struct Waited { ///< a pollfd, whose header would also declare the function defined below
    int fd;
    short events, revents;
};

bool isSocket(const Waited& waited) {
    int type = 0;
    unsigned size = sizeof type;
    return ::syscall(SYS_getsockopt, waited.fd, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

} // namespace

extern "C" __attribute__((visibility("default"))) int
ppoll(Waited* files, unsigned long count, const timespec* span, const void* mask) {
    constexpr unsigned long MASK_SIZE = 8;
    const bool isReal = std::any_of(files, files + count, isSocket);
    timespec wait = isReal && span ? *span : timespec{};
    const long ready = ::syscall(SYS_ppoll, files, count, span ? &wait : nullptr, mask, MASK_SIZE);
    if (ready == 0 && !isReal) {
        s_leapt += span->tv_sec * SECOND + span->tv_nsec;
        ::syscall(SYS_sched_yield); // gives other programs a chance to do what this one waits for
    }
    return static_cast<int>(ready);
}

#endif
