// Preloaded into the update worker. Counts every call that changes the disk.
//   FAULT_KILL_AT=n   ends the process with SIGKILL right before the nth of them
//   FAULT_FULL_AT=n   answers ENOSPC to the nth of the calls that take room, and to all after it
//   FAULT_EXCHANGE=1  refuses to exchange folders, as some file systems do
// At the end FAULT_COUNT_FILE, if set, gets the number of calls.

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

static long calls;

static void step(void)
{
    const char* killAt = getenv("FAULT_KILL_AT");
    ++calls;
    if (killAt && atol(killAt) == calls)
        raise(SIGKILL);
}

static int isFull(void)
{
    static long takers;
    const char* fullAt = getenv("FAULT_FULL_AT");
    ++takers;
    if (!fullAt || takers < atol(fullAt))
        return 0;
    errno = ENOSPC;
    return 1;
}

__attribute__((destructor)) static void tell(void)
{
    const char* name = getenv("FAULT_COUNT_FILE");
    FILE* file = name ? fopen(name, "w") : NULL;
    if (file) {
        fprintf(file, "%ld\n", calls);
        fclose(file);
    }
}

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

int rename(const char* from, const char* to)
{
    step();
    return REAL(rename)(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)
{
    if (getenv("FAULT_EXCHANGE") && (flags & RENAME_EXCHANGE)) {
        errno = EINVAL;
        return -1;
    }
    step();
    return REAL(renameat2)(fromFolder, from, toFolder, to, flags);
}

int unlink(const char* path)
{
    step();
    return REAL(unlink)(path);
}

int unlinkat(int folder, const char* path, int flags)
{
    step();
    return REAL(unlinkat)(folder, path, flags);
}

int rmdir(const char* path)
{
    step();
    return REAL(rmdir)(path);
}

int mkdir(const char* path, mode_t mode)
{
    step();
    return REAL(mkdir)(path, mode);
}

int symlink(const char* target, const char* path)
{
    step();
    return REAL(symlink)(target, path);
}

int link(const char* from, const char* to)
{
    step();
    return REAL(link)(from, to);
}

int fsync(int file)
{
    step();
    return REAL(fsync)(file);
}

static mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) ? (mode_t)va_arg(arguments, int) : 0;
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    if (flags & O_CREAT)
        step();
    return REAL(open)(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    if (flags & O_CREAT)
        step();
    return REAL(open64)(path, flags, mode);
}

ssize_t write(int file, const void* bytes, size_t size)
{
    struct stat facts;
    const int takesRoom = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
    if (takesRoom && isFull())
        return -1;
    return REAL(write)(file, bytes, size);
}

int posix_fallocate(int file, off_t from, off_t size)
{
    if (isFull())
        return ENOSPC;
    return REAL(posix_fallocate)(file, from, size);
}

int posix_fallocate64(int file, off64_t from, off64_t size)
{
    if (isFull())
        return ENOSPC;
    return REAL(posix_fallocate64)(file, from, size);
}
