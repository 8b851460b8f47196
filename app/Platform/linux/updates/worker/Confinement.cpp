#include "Platform/linux/updates/worker/Confinement.h"

#include "Platform/linux/Descriptor.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

// Writing, by the file system

/// Rights that came after the first version of Landlock, by the version that knows them (landlock(7)).
constexpr std::uint64_t kRefer = 1ULL << 13;    // 2
constexpr std::uint64_t kTruncate = 1ULL << 14; // 3

std::uint64_t writingRights(long version)
{
    std::uint64_t rights = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                           LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                           LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                           LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                           LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
    if (version >= 2)
        rights |= kRefer;
    if (version >= 3)
        rights |= kTruncate;
    return rights;
}

void allow(const Descriptor& rules, const fs::path& path, std::uint64_t rights)
{
    const Descriptor place(::open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat facts{};
    if (!place.isOpen() || ::fstat(place.number(), &facts) != 0)
        return;
    landlock_path_beneath_attr rule{};
    rule.allowed_access =
        S_ISDIR(facts.st_mode) ? rights : rights & (LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate);
    rule.parent_fd = place.number();
    ::syscall(SYS_landlock_add_rule, rules.number(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0U);
}

void limitWriting(const std::vector<fs::path>& writable)
{
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, std::size_t{0}, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return;
    landlock_ruleset_attr handled{};
    handled.handled_access_fs = writingRights(version);
    const Descriptor rules(static_cast<int>(
        ::syscall(SYS_landlock_create_ruleset, &handled, sizeof handled.handled_access_fs, 0U)));
    if (!rules.isOpen())
        return;
    for (const fs::path& path : writable)
        allow(rules, path, handled.handled_access_fs);
    allow(rules, "/dev/null", handled.handled_access_fs);
    ::syscall(SYS_landlock_restrict_self, rules.number(), 0U);
}

// Calls

#if defined(__x86_64__)
constexpr std::uint32_t kProcessor = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kProcessor = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kProcessor = 0; // no filter is made
#endif

/// Other processes, mounts and namespaces, the kernel's own matters, clocks, keys: nothing that reading a
/// feed or unpacking an archive comes near. What exists on one processor only is in the second list.
constexpr std::initializer_list<long> kRefusedCalls{
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_kcmp,
    SYS_pidfd_getfd,
    SYS_mount,
    SYS_umount2,
    SYS_pivot_root,
    SYS_chroot,
    SYS_move_mount,
    SYS_open_tree,
    SYS_fsopen,
    SYS_fsconfig,
    SYS_fsmount,
    SYS_fspick,
    SYS_mount_setattr,
    SYS_setns,
    SYS_unshare,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_kexec_file_load,
    SYS_bpf,
    SYS_perf_event_open,
    SYS_userfaultfd,
    SYS_keyctl,
    SYS_add_key,
    SYS_request_key,
    SYS_reboot,
    SYS_swapon,
    SYS_swapoff,
    SYS_settimeofday,
    SYS_clock_settime,
    SYS_clock_adjtime,
    SYS_adjtimex,
    SYS_sethostname,
    SYS_setdomainname,
    SYS_acct,
    SYS_quotactl,
    SYS_personality,
    SYS_name_to_handle_at,
    SYS_open_by_handle_at,
    SYS_fanotify_init,
    SYS_syslog,
    SYS_vhangup,
    SYS_mknodat,
    SYS_listen,
#if defined(__x86_64__)
    SYS_iopl,
    SYS_ioperm,
    SYS_modify_ldt,
    SYS_mknod,
    SYS_uselib,
#endif
};

/// New ways to do what the calls above do, which a filter cannot look into. "Not known" is what an older
/// kernel says, and what libraries are prepared for.
constexpr std::initializer_list<long> kUnknownCalls{SYS_io_uring_setup, SYS_io_uring_enter,
                                                    SYS_io_uring_register, SYS_clone3};

/// The flags of clone(2) that make namespaces: NEWNS, NEWCGROUP, NEWUTS, NEWIPC, NEWUSER, NEWPID, NEWNET.
constexpr std::uint32_t kNamespaces = 0x7e020000;

constexpr std::uint32_t kRefuse = SECCOMP_RET_ERRNO | EPERM;
constexpr std::uint32_t kUnknown = SECCOMP_RET_ERRNO | ENOSYS;

std::uint32_t lowHalfOfArgument(unsigned number)
{
    return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + number * sizeof(std::uint64_t));
}

/// The filter as the kernel takes it. Each rule is a comparison and the answer behind it.
class Filter {
public:
    Filter()
    {
        load(offsetof(seccomp_data, arch));
        // A call by another processor's numbers would be none of those below.
        add(BPF_JMP | BPF_JEQ | BPF_K, kProcessor, 1, 0);
        add(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS);
        load(offsetof(seccomp_data, nr));
#if defined(__x86_64__)
        constexpr std::uint32_t kOtherNumbers = 0x40000000;
        add(BPF_JMP | BPF_JGE | BPF_K, kOtherNumbers, 0, 1);
        add(BPF_RET | BPF_K, kRefuse);
#endif
    }

    void refuse(long call, std::uint32_t answer = kRefuse)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1);
        add(BPF_RET | BPF_K, answer);
    }

    void refuseWithFlags(long call, unsigned argument, std::uint32_t flags)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 4);
        load(lowHalfOfArgument(argument));
        add(BPF_JMP | BPF_JSET | BPF_K, flags, 0, 1);
        add(BPF_RET | BPF_K, kRefuse);
        load(offsetof(seccomp_data, nr));
    }

    void refuseValue(long call, unsigned argument, std::uint32_t value)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 4);
        load(lowHalfOfArgument(argument));
        add(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
        add(BPF_RET | BPF_K, kRefuse);
        load(offsetof(seccomp_data, nr));
    }

    void allowOnly(long call, unsigned argument, std::initializer_list<std::uint32_t> values)
    {
        const auto count = static_cast<std::uint8_t>(values.size());
        add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0,
            static_cast<std::uint8_t>(count + 3));
        load(lowHalfOfArgument(argument));
        std::uint8_t rest = count;
        for (const std::uint32_t value : values)
            add(BPF_JMP | BPF_JEQ | BPF_K, value, rest--, 0);
        add(BPF_RET | BPF_K, kRefuse);
        load(offsetof(seccomp_data, nr));
    }

    void install()
    {
        add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
        sock_fprog program{static_cast<unsigned short>(_steps.size()), _steps.data()};
        ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program);
    }

private:
    void load(std::size_t offset) { add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }

    void add(unsigned code, std::uint32_t value, std::uint8_t ifTrue = 0, std::uint8_t ifFalse = 0)
    {
        _steps.push_back({static_cast<std::uint16_t>(code), ifTrue, ifFalse, value});
    }

    std::vector<sock_filter> _steps;
};

void limitCalls(Programs programs)
{
    if (kProcessor == 0)
        return;
    Filter filter;
    for (const long call : kRefusedCalls)
        filter.refuse(call);
    for (const long call : kUnknownCalls)
        filter.refuse(call, kUnknown);
    if (programs == Programs::MayNotRun) {
        filter.refuse(SYS_execve);
        filter.refuse(SYS_execveat);
    }
    filter.refuseWithFlags(SYS_clone, 0, kNamespaces);
    filter.refuseValue(SYS_ioctl, 1, TIOCSTI); // typing into the terminal that somebody reads
    filter.allowOnly(SYS_socket, 0, {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK});
    filter.install();
}

} // namespace

bool isConfinementBuilt()
{
#ifdef FERROBANK_INSTRUMENTED
    return false;
#else
    return true;
#endif
}

void confine(const std::vector<fs::path>& writable, Programs programs)
{
    if (!isConfinementBuilt() || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return;
    limitWriting(writable);
    limitCalls(programs);
}

} // namespace ferrobank::updates
