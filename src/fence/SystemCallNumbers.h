#pragma once

#include <vector>

#include <sys/syscall.h>

/// The system calls that are denied, by what they are for. Those that the
/// headers of Debian 12 do not have yet stand with the kernel that brought
/// them; from 424 on the numbers are the same on all architectures.
namespace SystemCallNumbers {

constexpr long clone3 = 435;
constexpr long openat2 = 437;
constexpr long fchmodat2 = 452;     // Linux 6.6
constexpr long setxattrat = 463;    // Linux 6.13
constexpr long removexattrat = 466; // Linux 6.13
constexpr long openTreeAttr = 467;  // Linux 6.15
constexpr long fileSetattr = 469;   // Linux 6.17

/// Rarely used parts of the kernel that were the way out of many a sandbox.
inline std::vector<long> kernelDoors()
{
    return {SYS_bpf,
            SYS_perf_event_open,
            SYS_userfaultfd,
            SYS_io_uring_setup,
            SYS_io_uring_enter,
            SYS_io_uring_register,
            SYS_keyctl,
            SYS_add_key,
            SYS_request_key,
            SYS_init_module,
            SYS_finit_module,
            SYS_delete_module,
            SYS_kexec_load,
            SYS_open_by_handle_at,
            SYS_name_to_handle_at,
            SYS_acct,
            SYS_swapon,
            SYS_swapoff,
            SYS_reboot,
            SYS_syslog,
            SYS_quotactl,
            SYS_settimeofday,
            SYS_clock_settime,
            SYS_adjtimex,
            SYS_clock_adjtime,
            SYS_sethostname,
            SYS_setdomainname,
#ifdef SYS_kexec_file_load
            SYS_kexec_file_load,
#endif
#ifdef SYS_iopl
            SYS_iopl,
            SYS_ioperm,
            SYS_modify_ldt,
#endif
            SYS_vhangup};
}

inline std::vector<long> namespacesAndMounts()
{
    return {SYS_unshare,
            SYS_setns,
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
            442 /* mount_setattr */,
            openTreeAttr};
}

inline std::vector<long> otherProcesses()
{
    return {SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev,
            SYS_kcmp,   SYS_pidfd_getfd,      440 /* process_madvise */};
}

/// Memory, semaphores and messages that processes share by number or name.
inline std::vector<long> sharedObjects()
{
    return {SYS_shmget, SYS_shmat,      SYS_shmctl,   SYS_semget, SYS_semctl,
            SYS_semop,  SYS_semtimedop, SYS_msgget,   SYS_msgctl, SYS_msgsnd,
            SYS_msgrcv, SYS_mq_open,    SYS_mq_unlink};
}

inline std::vector<long> sockets()
{
    return {SYS_socket, SYS_socketpair};
}

/// What a file is like, by name or descriptor, for which Landlock has no right,
/// and programs that lie in memory.
inline std::vector<long> fileAttributes()
{
    return {SYS_truncate,     SYS_fchmod,
            SYS_fchmodat,     fchmodat2,
            SYS_fchown,       SYS_fchownat,
            SYS_setxattr,     SYS_lsetxattr,
            SYS_fsetxattr,    SYS_removexattr,
            SYS_lremovexattr, SYS_fremovexattr,
            setxattrat,       removexattrat,
            fileSetattr,      SYS_utimensat,
#ifdef SYS_chmod
            SYS_chmod,        SYS_chown,
            SYS_lchown,       SYS_utime,
            SYS_utimes,       SYS_futimesat,
#endif
            SYS_memfd_create, 447 /* memfd_secret */,
            SYS_execveat};
}

inline std::vector<long> newProcesses()
{
    return {
#ifdef SYS_fork
        SYS_fork, SYS_vfork
#endif
    };
}

/// What tells the names of files in a folder while they are used.
inline std::vector<long> watches()
{
    return {
#ifdef SYS_inotify_init
        SYS_inotify_init,
#endif
        SYS_inotify_init1, SYS_inotify_add_watch, SYS_fanotify_init};
}

/// Who a process is, what it may use up, and on which processor and in which
/// memory it, or another one, runs.
inline std::vector<long> identityAndLimits()
{
    return {SYS_setuid,
            SYS_setgid,
            SYS_setreuid,
            SYS_setregid,
            SYS_setresuid,
            SYS_setresgid,
            SYS_setgroups,
            SYS_setfsuid,
            SYS_setfsgid,
            SYS_capset,
            SYS_setrlimit,
            SYS_setpriority,
            SYS_sched_setscheduler,
            SYS_sched_setattr,
            SYS_sched_setparam,
            SYS_sched_setaffinity,
            SYS_ioprio_set,
            SYS_migrate_pages,
            SYS_move_pages};
}

inline std::vector<long> signals()
{
    return {SYS_tkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_pidfd_send_signal};
}

} // namespace SystemCallNumbers
