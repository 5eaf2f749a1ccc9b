#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/types.h>

#include "faults/Faults.h"

// Every call is defined under another name, and only its assembler name is that of the C library.
// So it does not conflict with the declarations in the headers, their inline versions and noexcept.

extern "C" long syscall(long number, ...);
extern "C" unsigned alarm(unsigned seconds);

namespace {

constexpr unsigned MOST_CALLS = 4096;

struct Made {
    char name[12];
    char file[100];
};

Made s_trace[MOST_CALLS];
std::atomic<unsigned> s_count{0};
std::atomic<bool> s_isCounting{false};
faults::Plan s_plan;
char s_name[12]; ///< of the planned call, once it has been made
constexpr int AT_FOLDER = -100;
constexpr int LAST_STANDARD_DESCRIPTOR = 2;

void copy(char* to, std::size_t size, const char* from) {
    std::snprintf(to, size, "%s", from);
}

/// The file of a descriptor, read without the calls that are counted.
void nameFile(char* to, std::size_t size, int descriptor) {
    char link[32];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const long length = ::syscall(SYS_readlinkat, AT_FOLDER, link, to, size - 1);
    to[length > 0 ? length : 0] = '\0';
}

/// What happens to a call.
struct Verdict {
    bool fails = false;
    bool isShort = false;
};

/// Counts a call on `file`, or on `descriptor` if `file` is null, and decides. Sets errno if the
/// call fails.
Verdict judge(const char* name, const char* file, int descriptor) {
    const bool isStandard = !file && descriptor >= 0 && descriptor <= LAST_STANDARD_DESCRIPTOR;
    if (!s_isCounting || isStandard)
        return {};
    const int kept = errno;
    const unsigned number = ++s_count;
    if (number <= MOST_CALLS) {
        Made& made = s_trace[number - 1];
        copy(made.name, sizeof made.name, name);
        if (file)
            copy(made.file, sizeof made.file, file);
        else
            nameFile(made.file, sizeof made.file, descriptor);
    }
    errno = kept;
    if (std::strcmp(s_plan.also, name) == 0) {
        errno = EIO;
        return {true, false};
    }
    if (number == s_plan.call)
        copy(s_name, sizeof s_name, name);
    const bool isMeant = number == s_plan.call || (s_plan.persists && number > s_plan.call &&
                                                   std::strcmp(s_name, name) == 0);
    if (s_plan.call == 0 || !isMeant)
        return {};
    if (s_plan.error == 0)
        return {false, true};
    errno = s_plan.error;
    return {true, false};
}

template <class Function>
Function* next(std::atomic<void*>& known, const char* name) {
    void* found = known.load(std::memory_order_relaxed);
    if (!found) {
        found = ::dlsym(RTLD_NEXT, name);
        known.store(found, std::memory_order_relaxed);
    }
    return reinterpret_cast<Function*>(found);
}

} // namespace

// NOLINTBEGIN(bugprone-macro-parentheses)

/// Replaces the C library's `name`. In its body REAL is the original.
#define CALL(Result, name, parameters)                                                             \
    extern "C" __attribute__((visibility("default")))                                              \
    Result faulty_##name parameters __asm__(#name);                                                \
    [[maybe_unused]] static std::atomic<void*> known_##name{nullptr};                              \
    Result faulty_##name parameters

#define REAL(Result, name, parameters) next<Result parameters>(known_##name, #name)

/// A call that returns `failure` if it fails and is otherwise passed on.
#define FAILING(Result, name, parameters, arguments, failure, file, descriptor)                    \
    CALL(Result, name, parameters) {                                                               \
        if (judge(#name, file, descriptor).fails)                                                  \
            return failure;                                                                        \
        return REAL(Result, name, parameters) arguments;                                           \
    }

/// A call that opens a path, with a mode if the flags require one.
#define OPENING(name, parameters, arguments)                                                       \
    extern "C" __attribute__((visibility("default"))) int faulty_##name parameters __asm__(#name); \
    static std::atomic<void*> known_##name{nullptr};                                               \
    int faulty_##name parameters {                                                                 \
        va_list rest;                                                                              \
        va_start(rest, flags);                                                                     \
        const auto mode = va_arg(rest, mode_t); /* garbage if there is none, and then unused */    \
        va_end(rest);                                                                              \
        if (judge(#name, path, -1).fails)                                                          \
            return -1;                                                                             \
        return next<int parameters>(known_##name, #name) arguments;                                \
    }

/// A call that reads or writes bytes, and can be limited to one.
#define MOVING(name, parameters, arguments)                                                        \
    CALL(ssize_t, name, parameters) {                                                              \
        const Verdict verdict = judge(#name, nullptr, descriptor);                                 \
        if (verdict.fails)                                                                         \
            return -1;                                                                             \
        if (verdict.isShort && count > 1)                                                          \
            count = 1;                                                                             \
        return REAL(ssize_t, name, parameters) arguments;                                          \
    }

/// A call that releases something, even if it fails.
#define CLOSING(name, Handle, descriptor)                                                          \
    CALL(int, name, (Handle handle)) {                                                             \
        const Verdict verdict = judge(#name, nullptr, descriptor);                                 \
        const int error = errno;                                                                   \
        const int result = REAL(int, name, (Handle))(handle);                                      \
        if (!verdict.fails)                                                                        \
            return result;                                                                         \
        errno = error;                                                                             \
        return -1;                                                                                 \
    }

OPENING(open, (const char* path, int flags, ...), (path, flags, mode))
OPENING(open64, (const char* path, int flags, ...), (path, flags, mode))
OPENING(openat, (int folder, const char* path, int flags, ...), (folder, path, flags, mode))
FAILING(std::FILE*, fopen, (const char* path, const char* how), (path, how), nullptr, path, -1)
FAILING(std::FILE*, fopen64, (const char* path, const char* how), (path, how), nullptr, path, -1)

MOVING(read, (int descriptor, void* bytes, std::size_t count), (descriptor, bytes, count))
MOVING(pread, (int descriptor, void* bytes, std::size_t count, off_t place),
       (descriptor, bytes, count, place))
MOVING(write, (int descriptor, const void* bytes, std::size_t count), (descriptor, bytes, count))
MOVING(pwrite, (int descriptor, const void* bytes, std::size_t count, off_t place),
       (descriptor, bytes, count, place))
CALL(ssize_t, __read_chk, (int descriptor, void* bytes, std::size_t count, std::size_t)) {
    return faulty_read(descriptor, bytes, count);
}
CALL(ssize_t, __pread_chk,
     (int descriptor, void* bytes, std::size_t count, off_t place, std::size_t)) {
    return faulty_pread(descriptor, bytes, count, place);
}
FAILING(ssize_t, writev, (int descriptor, const void* parts, int count), (descriptor, parts, count),
        -1, nullptr, descriptor)
FAILING(char*, fgets, (char* text, int size, std::FILE* file), (text, size, file), nullptr, nullptr,
        ::fileno(file))

CLOSING(close, int, handle)
CLOSING(fclose, std::FILE*, ::fileno(handle))

FAILING(int, fsync, (int descriptor), (descriptor), -1, nullptr, descriptor)
FAILING(int, fchmod, (int descriptor, mode_t mode), (descriptor, mode), -1, nullptr, descriptor)
FAILING(int, fchown, (int descriptor, uid_t owner, gid_t group), (descriptor, owner, group), -1,
        nullptr, descriptor)
FAILING(int, flock, (int descriptor, int operation), (descriptor, operation), -1, nullptr,
        descriptor)
FAILING(int, fstat, (int descriptor, void* status), (descriptor, status), -1, nullptr, descriptor)
FAILING(int, stat, (const char* path, void* status), (path, status), -1, path, -1)
FAILING(int, access, (const char* path, int mode), (path, mode), -1, path, -1)
FAILING(int, rename, (const char* from, const char* to), (from, to), -1, from, -1)
FAILING(int, unlink, (const char* path), (path), -1, path, -1)
FAILING(int, mkdir, (const char* path, mode_t mode), (path, mode), -1, path, -1)
FAILING(int, mkfifo, (const char* path, mode_t mode), (path, mode), -1, path, -1)
FAILING(int, mknod, (const char* path, mode_t mode, dev_t device), (path, mode, device), -1, path,
        -1)
FAILING(int, mkostemp, (char* path, int flags), (path, flags), -1, path, -1)
FAILING(char*, mkdtemp, (char* path), (path), nullptr, path, -1)
FAILING(int, eventfd, (unsigned count, int flags), (count, flags), -1, "eventfd", -1)

// NOLINTEND(bugprone-macro-parentheses)

void faults::begin(const Plan& plan) {
    s_plan = plan;
    s_name[0] = '\0';
    s_count = 0;
    s_isCounting = true;
}

std::vector<std::string> faults::end() {
    s_isCounting = false;
    std::vector<std::string> calls;
    for (unsigned i = 0; i < s_count && i < MOST_CALLS; ++i)
        calls.push_back(std::string(s_trace[i].name) + " " + s_trace[i].file);
    return calls;
}

#ifdef FAULTS_PRELOADED

namespace {

constexpr unsigned PATIENCE_SECONDS = 20;
constexpr long NANOSECONDS = 1000000000;
std::atomic<std::int64_t> s_leapt{0}; ///< how far the program's clock is ahead, in nanoseconds

/// "CALL:ERROR[:persists][:NAME]"
faults::Plan planOf(const char* text) {
    faults::Plan plan;
    char* rest = nullptr;
    plan.call = static_cast<unsigned>(std::strtoul(text, &rest, 10));
    plan.error = static_cast<int>(std::strtol(*rest ? rest + 1 : rest, &rest, 10));
    constexpr char PERSISTS[] = ":persists";
    if (std::strncmp(rest, PERSISTS, sizeof PERSISTS - 1) == 0) {
        plan.persists = true;
        rest += sizeof PERSISTS - 1;
    }
    plan.also = *rest ? rest + 1 : "";
    return plan;
}

__attribute__((constructor)) void beginAsTheEnvironmentSays() {
    // A signal ends a program that hangs. No test accepts that as a result.
    ::alarm(PATIENCE_SECONDS);
    if (const char* const plan = std::getenv("FAULTS_PLAN"))
        faults::begin(planOf(plan));
}

__attribute__((destructor)) void writeTrace() {
    const char* const path = std::getenv("FAULTS_TRACE");
    const std::vector<std::string> calls = faults::end();
    std::FILE* const file = path ? std::fopen(path, "w") : nullptr;
    if (!file)
        return;
    for (const std::string& call : calls)
        std::fprintf(file, "%s\n", call.c_str());
    std::fclose(file);
}

} // namespace

// Waits take no time: the program's clock jumps to the end of the wait.

CALL(int, clock_gettime, (clockid_t clock, timespec* now)) {
    const int result = REAL(int, clock_gettime, (clockid_t, timespec*))(clock, now);
    if (result == 0 && clock == CLOCK_MONOTONIC) {
        const std::int64_t sum = now->tv_nsec + s_leapt;
        now->tv_sec += static_cast<time_t>(sum / NANOSECONDS);
        now->tv_nsec = static_cast<long>(sum % NANOSECONDS);
    }
    return result;
}

CALL(int, ppoll, (pollfd * waited, nfds_t count, const timespec* span, const void* mask)) {
    const timespec atOnce{};
    const int ready = REAL(int, ppoll, (pollfd*, nfds_t, const timespec*, const void*))(
        waited, count, span ? &atOnce : nullptr, mask);
    if (ready == 0 && span)
        s_leapt += span->tv_sec * std::int64_t{NANOSECONDS} + span->tv_nsec;
    return ready;
}

#endif
