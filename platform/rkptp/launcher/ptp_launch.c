/* SPDX-License-Identifier: MIT */
/*
 * ptp_launch - starts one ptp4l as a client that can do no harm.
 *
 * It carries the file capability cap_net_bind_service=p and hands just that on to ptp4l, which needs it for
 * the ports 319 and 320. What it accepts is narrow on purpose: everything else about the ptp4l it starts is
 * fixed here.
 *
 *     ptp_launch PARENT DOMAIN IDENTITY SOCKET INTERFACE...
 *     ptp_launch PARENT listen INTERFACE...
 *
 * The second form starts nothing: it tells which masters it hears by multicast, on standard output.
 *
 * PARENT     process number of the caller; ptp4l is killed when the caller's thread ends
 * DOMAIN     0 to RKPTP_HIGHEST_DOMAIN
 * IDENTITY   clock identity as 021dc1.fffe.123456, with the "locally administered" bit
 * SOCKET     absolute path in a folder of mode 0700 that belongs to the caller
 * INTERFACE  1 to 8 names of existing network interfaces
 */
#include "launchcodes.h"
#include "listen.h"
#include "rkptp.h"

#include <ctype.h>
#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <linux/close_range.h>
#include <linux/securebits.h>
#include <net/if.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#define MAX_INTERFACES 8
#define FIRST_INTERFACE 5
#define FIRST_LISTENED 3
#define PTP_EVENT_PORT 319
#define TEXT_OF_TOKENS(x) #x
#define TEXT_OF(macro) TEXT_OF_TOKENS(macro)

static const char kUsage[] = "usage: ptp_launch PARENT DOMAIN IDENTITY SOCKET INTERFACE...\n"
                             "       ptp_launch PARENT listen INTERFACE...\n";

static void refuse(const char *what, const char *value)
{
    fprintf(stderr, "ptp_launch: %s: %s\n", what, value);
    exit(LAUNCH_BAD_ARGUMENT);
}

static void fail(const char *what)
{
    fprintf(stderr, "ptp_launch: %s: %s\n", what, strerror(errno));
    exit(LAUNCH_SYSTEM);
}

/* A plain decimal number: digits only, no leading zero. -1 for anything else. */
static long parseNumber(const char *text, long max)
{
    const size_t length = strlen(text);
    if (length < 1 || length > 9 || strspn(text, "0123456789") != length || (length > 1 && text[0] == '0'))
        return -1;
    const long value = strtol(text, NULL, 10);
    return value <= max ? value : -1;
}

static bool isIdentity(const char *text)
{
    static const char shape[] = "xxxxxx.xxxx.xxxxxx";
    if (strlen(text) != sizeof shape - 1)
        return false;
    for (size_t i = 0; shape[i]; ++i)
        if (shape[i] == 'x' ? !strchr("0123456789abcdef", text[i]) : text[i] != shape[i])
            return false;
    const char first[] = {text[0], text[1], 0};
    const unsigned long octet = strtoul(first, NULL, 16);
    return (octet & 3) == 2; /* local, and not a group */
}

static bool isInterfaceName(const char *text)
{
    const size_t length = strlen(text);
    if (length < 1 || length >= IF_NAMESIZE || text[0] == '-' || text[0] == '.')
        return false;
    for (size_t i = 0; i < length; ++i)
        if (!isalnum((unsigned char)text[i]) && !strchr("-_.", text[i]))
            return false;
    return if_nametoindex(text) != 0;
}

/* ptp4l removes whatever stands at the path: it must lie in a folder that only the caller can write, and what
   is there already must be a socket of his. */
static bool isSocketPath(const char *path)
{
    struct sockaddr_un address;
    char folder[sizeof address.sun_path];
    struct stat info;
    const size_t length = strlen(path);
    if (path[0] != '/' || length >= sizeof folder || strstr(path, "/../") || path[length - 1] == '/')
        return false;
    for (size_t i = 0; i < length; ++i)
        if (iscntrl((unsigned char)path[i]))
            return false;
    memcpy(folder, path, length + 1);
    if (lstat(dirname(folder), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != getuid() ||
        (info.st_mode & 07777) != 0700)
        return false;
    return lstat(path, &info) != 0 ? errno == ENOENT : S_ISSOCK(info.st_mode) && info.st_uid == getuid();
}

static void checkClient(char **argv)
{
    if (parseNumber(argv[2], RKPTP_HIGHEST_DOMAIN) < 0)
        refuse("not a domain from 0 to " TEXT_OF(RKPTP_HIGHEST_DOMAIN), argv[2]);
    if (!isIdentity(argv[3]))
        refuse("not a local clock identity", argv[3]);
    if (!isSocketPath(argv[4]))
        refuse("not a socket path in a private folder", argv[4]);
}

static bool listens(int argc, char **argv)
{
    return argc > 2 && strcmp(argv[2], "listen") == 0;
}

static void checkInterfaces(int count, char **names)
{
    if (count < 1 || count > MAX_INTERFACES) {
        fputs(kUsage, stderr);
        exit(LAUNCH_BAD_ARGUMENT);
    }
    for (int i = 0; i < count; ++i) {
        if (!isInterfaceName(names[i]))
            refuse("not a network interface", names[i]);
        for (int j = 0; j < i; ++j)
            if (strcmp(names[i], names[j]) == 0)
                refuse("network interface given twice", names[i]);
    }
}

static void checkArguments(int argc, char **argv)
{
    const int first = listens(argc, argv) ? FIRST_LISTENED : FIRST_INTERFACE;
    if (argc < 2 || argc <= first || argc > first + MAX_INTERFACES) {
        fputs(kUsage, stderr);
        exit(LAUNCH_BAD_ARGUMENT);
    }
    if (parseNumber(argv[1], 1L << 30) < 1)
        refuse("not a process number", argv[1]);
    if (!listens(argc, argv))
        checkClient(argv);
    checkInterfaces(argc - first, argv + first);
}

/* Some machines let everybody open low ports; then no capability is needed. */
static bool portsAreFree(void)
{
    int first = 1024;
    FILE *file = fopen("/proc/sys/net/ipv4/ip_unprivileged_port_start", "re");
    if (!file)
        return false;
    const bool read = fscanf(file, "%d", &first) == 1;
    fclose(file);
    return read && first <= PTP_EVENT_PORT;
}

static bool mayBind(void)
{
    cap_flag_value_t value = CAP_CLEAR;
    cap_t own = cap_get_proc();
    const bool known = own && cap_get_flag(own, CAP_NET_BIND_SERVICE, CAP_PERMITTED, &value) == 0;
    cap_free(own);
    return known && value == CAP_SET;
}

/* For root too: an exec shall not give back what is dropped here. Without CAP_SETPCAP there is nothing to
 * give back. */
static void forgetRoot(void)
{
    cap_t own = cap_get_proc();
    const cap_value_t setpcap[] = {CAP_SETPCAP};
    if (own && cap_set_flag(own, CAP_EFFECTIVE, 1, setpcap, CAP_SET) == 0 && cap_set_proc(own) == 0)
        prctl(PR_SET_SECUREBITS, SECBIT_NOROOT | SECBIT_NOROOT_LOCKED, 0, 0, 0);
    cap_free(own);
}

/* From here on and through exec this process has CAP_NET_BIND_SERVICE, or nothing, and never more. */
static void keepCapability(bool bindService)
{
    const cap_value_t kept[] = {CAP_NET_BIND_SERVICE};
    cap_t only = cap_init();
    if (!only)
        fail("capabilities");
    if (bindService && (cap_set_flag(only, CAP_PERMITTED, 1, kept, CAP_SET) != 0 ||
                        cap_set_flag(only, CAP_INHERITABLE, 1, kept, CAP_SET) != 0))
        fail("capabilities");
    if (cap_set_proc(only) != 0)
        fail("capabilities");
    cap_free(only);
    if (bindService && cap_set_ambient(CAP_NET_BIND_SERVICE, CAP_SET) != 0)
        fail("ambient capability");
}

static void raiseCapability(void)
{
    const cap_value_t raised[] = {CAP_NET_BIND_SERVICE};
    cap_t own = cap_get_proc();
    if (!own || cap_set_flag(own, CAP_EFFECTIVE, 1, raised, CAP_SET) != 0 || cap_set_proc(own) != 0)
        fail("capabilities");
    cap_free(own);
}

static void openMissingStandardFiles(void)
{
    int fd;
    do
        fd = open("/dev/null", O_RDWR);
    while (fd >= 0 && fd <= 2);
    if (fd >= 0)
        close(fd);
}

/* The kernel drops this wish at exec of a file with capabilities, so the caller cannot set it for us. */
static void dieWithParent(const char *parent)
{
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0)
        fail("parent death signal");
    if (getppid() != strtol(parent, NULL, 10))
        exit(LAUNCH_PARENT_GONE);
}

static void runPtp4l(int argc, char **argv)
{
    static char *const environment[] = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", NULL};
    char domain[40];
    char identity[60];
    char socket[160];
    snprintf(domain, sizeof domain, "--domainNumber=%s", argv[2]);
    snprintf(identity, sizeof identity, "--clockIdentity=%s", argv[3]);
    snprintf(socket, sizeof socket, "--uds_address=%s", argv[4]);
    /* Free running and slave only: no clock is ever adjusted, no master ever played. The first delay is asked
       for within half a second; from the answer on the master's own interval counts. */
    char *arguments[20 + 2 * MAX_INTERFACES] = {"ptp4l",
                                                "-4",
                                                "-E",
                                                "-S",
                                                "-s",
                                                "-m",
                                                "-q",
                                                "--free_running=1",
                                                "--kernel_leap=0",
                                                "--fault_reset_interval=0",
                                                "--summary_interval=6",
                                                "--logMinDelayReqInterval=-2",
                                                domain,
                                                socket,
                                                identity};
    int count = 15;
    for (int i = FIRST_INTERFACE; i < argc; ++i) {
        arguments[count++] = "-i";
        arguments[count++] = argv[i];
    }
    execve(RKPTP_PTP4L, arguments, environment);
    fprintf(stderr, "ptp_launch: %s: %s\n", RKPTP_PTP4L, strerror(errno));
    exit(LAUNCH_NO_PTP4L);
}

/* The ports are opened with the capability, which is given up before the first byte is read. */
static void listenOnly(int argc, char **argv, bool bindService)
{
    if (bindService)
        raiseCapability();
    if (openListeners(argc - FIRST_LISTENED, argv + FIRST_LISTENED) != 0)
        fail("listening");
    forgetRoot();
    keepCapability(false);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    dieWithParent(argv[1]);
    tellAnnounces(argc - FIRST_LISTENED, argv + FIRST_LISTENED);
    exit(0);
}

int main(int argc, char **argv)
{
    openMissingStandardFiles();
    if (close_range(3, ~0U, 0) != 0)
        fail("close");
    checkArguments(argc, argv);
    if (getuid() != geteuid() || getgid() != getegid())
        refuse("must not be set-user-id", argv[0]);
    if (!listens(argc, argv) && access(RKPTP_PTP4L, X_OK) != 0) {
        fprintf(stderr, "ptp_launch: %s: %s\n", RKPTP_PTP4L, strerror(errno));
        return LAUNCH_NO_PTP4L;
    }
    const bool bindService = mayBind();
    if (!bindService && !portsAreFree()) {
        fputs("ptp_launch: no capability to open the ports 319 and 320\n", stderr);
        return LAUNCH_NO_CAPABILITY;
    }
    if (listens(argc, argv))
        listenOnly(argc, argv, bindService);
    forgetRoot();
    keepCapability(bindService);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    umask(0077);
    if (chdir("/") != 0)
        fail("/");
    dieWithParent(argv[1]);
    runPtp4l(argc, argv);
}
