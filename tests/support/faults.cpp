// SPDX-License-Identifier: MIT
#include "tests/support/faults.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <iconv.h>
#include <new>
#include <optional>
#include <unistd.h>

namespace {

constexpr int kNoLimit = -1;

int copies = kNoLimit;
bool isNewFailing = false;
int errorOnDelete = 0; ///< 0: errno is not changed

std::string unclosable;
std::string unwritable;
std::string removedPath;
std::function<void()> removalAction;
std::function<void(int)> preadAction;
int preads = 0;

bool isForkFailing = false;
std::function<void()> forkAction;

bool isIconvOpenFailing = false;
bool isIconvFailing = false;
int convertersOpen = 0;
std::string conversion;

/// The C library's own function.
template <class Function> Function* real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Whether a stream has the file of this path open; never for an empty path.
bool leadsTo(FILE* file, const std::string& path)
{
    std::error_code none;
    return !path.empty() && std::filesystem::read_symlink(
                                "/proc/self/fd/" + std::to_string(::fileno(file)), none) == path;
}

} // namespace

namespace faults {

Guard failStrdup(int successes)
{
    copies = successes;
    return Guard([] { copies = kNoLimit; });
}

int copiesLeft()
{
    return copies;
}

Guard failNew()
{
    isNewFailing = true;
    return Guard([] { isNewFailing = false; });
}

Guard setErrnoOnDelete(int error)
{
    errorOnDelete = error;
    return Guard([] { errorOnDelete = 0; });
}

Guard failFclose(const std::string& path)
{
    unclosable = path;
    return Guard([] { unclosable.clear(); });
}

Guard failFwrite(const std::string& path)
{
    unwritable = path;
    return Guard([] { unwritable.clear(); });
}

Guard beforeRemove(const std::string& path, std::function<void()> action)
{
    removedPath = path;
    removalAction = std::move(action);
    return Guard([] { removedPath.clear(); });
}

Guard beforePread(std::function<void(int)> action)
{
    preads = 0;
    preadAction = std::move(action);
    return Guard([] { preadAction = nullptr; });
}

Guard failFork()
{
    isForkFailing = true;
    return Guard([] { isForkFailing = false; });
}

Guard beforeFork(std::function<void()> action)
{
    forkAction = std::move(action);
    return Guard([] { forkAction = nullptr; });
}

Guard failIconvOpen()
{
    isIconvOpenFailing = true;
    return Guard([] { isIconvOpenFailing = false; });
}

Guard failIconv()
{
    isIconvFailing = true;
    return Guard([] { isIconvFailing = false; });
}

int openConverters()
{
    return convertersOpen;
}

std::string lastConversion()
{
    return conversion;
}

} // namespace faults

// These replace the functions of the C library.

void* operator new(std::size_t size)
{
    void* block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return isNewFailing ? nullptr : std::malloc(size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
    errno = (errorOnDelete != 0) ? errorOnDelete : errno;
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    ::operator delete(block);
}

extern "C" {

char* strdup(const char* text) noexcept
{
    if (copies == 0) {
        errno = ENOMEM;
        return nullptr;
    }
    copies -= (copies == kNoLimit) ? 0 : 1;
    const std::size_t size = std::strlen(text) + 1;
    void* copy = std::malloc(size);
    return (copy == nullptr) ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

int fclose(FILE* file)
{
    if (leadsTo(file, unclosable)) {
        ::close(::fileno(file));
    }
    static auto* const next = real<int(FILE*)>("fclose");
    return next(file);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file)
{
    if (leadsTo(file, unwritable)) {
        errno = ENOSPC;
        return 0;
    }
    using Function = std::size_t(const void*, std::size_t, std::size_t, FILE*);
    static auto* const next = real<Function>("fwrite");
    return next(bytes, size, count, file);
}

int remove(const char* path) noexcept
{
    if (removedPath == path) {
        removedPath.clear();
        removalAction();
    }
    const int result = ::unlink(path);
    return (result != 0 && errno == EISDIR) ? ::rmdir(path) : result;
}

ssize_t pread(int file, void* buffer, std::size_t size, off_t offset)
{
    if (preadAction) {
        preadAction(++preads);
    }
    return ::lseek(file, offset, SEEK_SET) == offset ? ::read(file, buffer, size) : -1;
}

pid_t fork() noexcept
{
    if (forkAction) {
        forkAction();
    }
    if (isForkFailing) {
        errno = EAGAIN;
        return -1;
    }
    return real<pid_t()>("fork")();
}

iconv_t iconv_open(const char* to, const char* from)
{
    conversion = std::string(from) + " to " + to;
    auto* const open = real<iconv_t(const char*, const char*)>("iconv_open");
    if (isIconvOpenFailing) {
        return open("no encoding", "no encoding");
    }
    ++convertersOpen;
    return open(to, from);
}

std::size_t iconv(iconv_t converter, char** in, std::size_t* inLeft, char** out,
                  std::size_t* outLeft)
{
    if (isIconvFailing) {
        errno = EILSEQ;
        return static_cast<std::size_t>(-1);
    }
    using Function = std::size_t(iconv_t, char**, std::size_t*, char**, std::size_t*);
    return real<Function>("iconv")(converter, in, inLeft, out, outLeft);
}

int iconv_close(iconv_t converter)
{
    --convertersOpen;
    return real<int(iconv_t)>("iconv_close")(converter);
}

} // extern "C"
