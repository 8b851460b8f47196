// Preloaded into the update worker. Counts every call that changes the disk.
//   FAULT_KILL_AT=n   ends the process with SIGKILL right before the nth of them
//   FAULT_POWER=1     … as a power failure does it: what was written to a file and not forced to the disk is
//   gone,
//                     and so are files made and names changed in folders that were not forced down since
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
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static long calls;

// What a power failure would undo, the oldest first. A folder that is forced down settles what was done in
// it; a file that is forced down settles its bytes and its own name, as the file systems in use do it.
enum Kind { Written, Made, Moved };

struct Change {
    enum Kind kind;
    char* path;   // of a file written or made; the new name
    char* before; // the old name
    ino_t file;
    dev_t device;
};

enum { kMostChanges = 4096 };
static struct Change changes[kMostChanges];
static int changeCount;

static char* folderOf(const char* path)
{
    char* folder = strdup(path);
    char* slash = strrchr(folder, '/');
    if (slash)
        *slash = 0;
    return folder;
}

static void note(enum Kind kind, const char* path, const char* before, const struct stat* facts)
{
    if (!getenv("FAULT_POWER") || changeCount == kMostChanges)
        return;
    struct Change* change = &changes[changeCount++];
    change->kind = kind;
    change->path = strdup(path);
    change->before = before ? strdup(before) : NULL;
    change->file = facts ? facts->st_ino : 0;
    change->device = facts ? facts->st_dev : 0;
}

static void forget(int at)
{
    memmove(&changes[at], &changes[at + 1], (size_t)(changeCount - at - 1) * sizeof changes[0]);
    --changeCount;
}

static void pathOf(int file, char* path, size_t size)
{
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, size - 1);
    path[length > 0 ? length : 0] = 0;
}

static void settle(int file)
{
    struct stat facts;
    char path[4096];
    if (!changeCount || fstat(file, &facts) != 0)
        return;
    pathOf(file, path, sizeof path);
    for (int i = changeCount - 1; i >= 0; --i) {
        const struct Change* change = &changes[i];
        int isSettled = change->file == facts.st_ino && change->device == facts.st_dev;
        if (S_ISDIR(facts.st_mode) && change->kind != Written) {
            char* folder = folderOf(change->path);
            isSettled = isSettled || strcmp(folder, path) == 0;
            free(folder);
        }
        if (isSettled)
            forget(i);
    }
}

static void losePower(void)
{
    while (changeCount > 0) {
        const struct Change* change = &changes[--changeCount];
        if (change->kind == Moved)
            REAL(rename)(change->path, change->before);
        else if (change->kind == Made)
            REAL(unlink)(change->path);
        else
            truncate(change->path, 0);
    }
}

static void step(void)
{
    const char* killAt = getenv("FAULT_KILL_AT");
    ++calls;
    if (!killAt || atol(killAt) != calls)
        return;
    if (getenv("FAULT_POWER"))
        losePower();
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

int rename(const char* from, const char* to)
{
    struct stat facts;
    step();
    // A name that replaces another cannot be taken back here: the other one is gone.
    const int isNew = lstat(to, &facts) != 0;
    const int status = REAL(rename)(from, to);
    if (status == 0 && isNew)
        note(Moved, to, from, NULL);
    return status;
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
    const int status = REAL(fsync)(file);
    if (status == 0)
        settle(file);
    return status;
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
    struct stat facts;
    const int isNew = (flags & O_CREAT) && lstat(path, &facts) != 0;
    const int file = REAL(open)(path, flags, mode);
    if (isNew && file >= 0 && fstat(file, &facts) == 0)
        note(Made, path, NULL, &facts);
    return file;
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    if (flags & O_CREAT)
        step();
    struct stat facts;
    const int isNew = (flags & O_CREAT) && lstat(path, &facts) != 0;
    const int file = REAL(open64)(path, flags, mode);
    if (isNew && file >= 0 && fstat(file, &facts) == 0)
        note(Made, path, NULL, &facts);
    return file;
}

ssize_t write(int file, const void* bytes, size_t size)
{
    struct stat facts;
    const int takesRoom = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
    if (takesRoom && isFull())
        return -1;
    if (takesRoom && getenv("FAULT_POWER")) {
        char path[4096];
        pathOf(file, path, sizeof path);
        note(Written, path, NULL, &facts);
    }
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
