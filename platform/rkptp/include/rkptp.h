/* SPDX-License-Identifier: MIT */
/*
 * rkptp - a software PTP (IEEE 1588-2008, SMPTE ST 2059-2) client.
 *
 * Each client is one ptp4l of the linuxptp package, started as a child process that only listens: it never
 * adjusts a clock and never becomes a master. A thread of the library starts it, asks it several times a
 * second what it sees and keeps the answers; the functions below leave wishes for that thread or read what it
 * last saw.
 *
 * Blocking and threads: no function waits for the network, a process or a file. The getters make no system
 * call but reading the clock. All functions may be called from any thread and after the end of a client. In
 * the child of a fork() every handle reads as ended.
 *
 * Handles are numbers, not pointers: they are never used again within a process, and a null handle, an ended
 * one or any other value is accepted everywhere and means "no client". At the end of the process, also by
 * kill -9, no ptp4l is left behind. The library stays in memory once it is loaded; dlclose() ends no client.
 *
 * Results: RKPTP_OK (0), or one of the RKPTP_ numbers as told with each function. Nothing is thrown.
 *
 * What stands in the way of a client (no interface with the address, no ptp4l, no permission) is written to
 * the log with ErrOut of rkos, with the command that mends it, at most one line a minute of each kind.
 */
#ifndef RKPTP_H
#define RKPTP_H

#include <stdint.h>

#if defined(RKPTP_BUILD)
#define RKPTP_API __attribute__((visibility("default")))
#else
#define RKPTP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef void *PTP_HANDLE;

/* Status of a handle without a running client. Also the result of every function for such a handle. */
#define RKPTP_NO_CLIENT (-100)

/* The other status numbers. */
#define RKPTP_STARTING 0          /* on its way: nothing has been heard of ptp4l yet */
#define RKPTP_LISTENING 1         /* runs, but no master gives the time in this domain */
#define RKPTP_LOCKED 2            /* syncs of the wanted grandmaster come in, the last at most 3 s ago */
#define RKPTP_OTHER_GRANDMASTER 3 /* the same, but of another grandmaster than asked for */
#define RKPTP_PORT_FAULTY 4       /* link down, interface gone, or ptp4l cannot use it */
#define RKPTP_SYNC_LOST 5         /* was locked; no sync for more than 3 s. Time goes on from the last one */

/* Results of functions. */
#define RKPTP_OK 0
#define RKPTP_NOT_SYNCED 1 /* there is a client, but no (fresh) sync to answer from */
#define RKPTP_BAD_ARGUMENT (-1)

/* The version of the interface of the library that is loaded, "2.0". A library of 1 lacks this call, and all
 * below that say "since 2.0". */
RKPTP_API const char *rkPTPVersion(void);

/* Size of every text buffer: the text, at most 63 characters, and its end. */
#define RKPTP_TEXT_SIZE 64

/*
 * Starts a client on the interface that has this IPv4 address ("192.168.1.20"). "0.0.0.0", an empty text or
 * null stand for all running multicast interfaces with software time stamps except loopback, at most 8; the
 * client follows the best master of all. Returns a handle at once; null only when the process is ending or no
 * thread can be started. ptp4l itself is started 300 ms after the last of rkPTPStart, rkPTPSetTargetDomain
 * and rkPTPSetTargetMacAddress, so that a domain named after the start, or one being typed, costs one start
 * and no more. The domain is 0 and every grandmaster is welcome until the two functions below say otherwise.
 * The status is RKPTP_STARTING until ptp4l answers. It becomes RKPTP_NO_CLIENT when the text is no address
 * (at once) or no interface has it, or when ptp4l cannot be started or ends; the library then tries again by
 * itself: after 5 s where the interface is missing, otherwise after 1 s, from the third failure in 10 s on
 * after 5 s, doubling to 60 s. Ending the client and starting another one does not shorten that.
 */
RKPTP_API PTP_HANDLE rkPTPStart(const char *interfaceAddress);

/*
 * Ends a client; its handle reads RKPTP_NO_CLIENT from now on. ptp4l is kept for 300 ms: a client that is
 * started for the same address and domain in that time takes it over, with all it has seen, instead of
 * starting another.
 */
RKPTP_API void rkPTPEnd(PTP_HANDLE handle);

/*
 * Returns one of the status numbers above. `reserved` is not looked at; pass 0.
 */
RKPTP_API int rkPTPGetStatus(PTP_HANDLE handle, int reserved);

#define RKPTP_HIGHEST_DOMAIN 127

/*
 * Chooses the PTP domain, 0 to RKPTP_HIGHEST_DOMAIN. A change drops what was seen in the domain before; the
 * status is RKPTP_STARTING again. Any other number gives RKPTP_BAD_ARGUMENT, and the client does not run
 * (RKPTP_NO_CLIENT) until a valid one is chosen.
 */
RKPTP_API int rkPTPSetTargetDomain(PTP_HANDLE handle, uint32_t domain);

/*
 * Names the grandmaster to follow, UTF-8; null, empty or blank: any. Taken is an EUI-64 or a MAC address in
 * either case, its bytes joined or separated by '-', ':' or '.' (00-1D-C1-FF-FE-12-34-56, 001dc1.fffe.123456,
 * 00:1d:c1:12:34:56). A text that is neither gives RKPTP_BAD_ARGUMENT; it fits no grandmaster.
 * PTP itself chooses the best master of a domain and a client cannot overrule that: with another grandmaster
 * than the one named the status is RKPTP_OTHER_GRANDMASTER, and one line is written to the log.
 */
RKPTP_API int rkPTPSetTargetMacAddress(PTP_HANDLE handle, const char *identity);

/*
 * The text getters write at most RKPTP_TEXT_SIZE bytes to `buffer`. What is not known (yet) is an empty text,
 * with RKPTP_OK. Without a running client the text is empty and the result RKPTP_NO_CLIENT. A null buffer:
 * RKPTP_BAD_ARGUMENT.
 */

/* The protocol version of the client: "PTPv2". */
RKPTP_API int rkPTPGetVersion(PTP_HANDLE handle, char *buffer);

/* The domain ptp4l runs in, decimal. */
RKPTP_API int rkPTPGetDomain(PTP_HANDLE handle, char *buffer);

/* The port of the master that the syncs come from: "00-1D-C1-FF-FE-12-34-56-1". Empty without a master. */
RKPTP_API int rkPTPGetSourcePortID(PTP_HANDLE handle, char *buffer);

/* Address of the interface the master is seen on; with one interface known also without a master. */
RKPTP_API int rkPTPGetIPAddress(PTP_HANDLE handle, char *buffer);

/* Identity of the grandmaster: "00-1D-C1-FF-FE-12-34-56". Empty without a master. */
RKPTP_API int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *buffer);

/*
 * The time of the master in seconds since 1970 and nanoseconds (0 to 999999999): TAI where the master keeps
 * the PTP timescale, what the master says otherwise. Between syncs, after their loss and while a ptp4l that
 * broke down is replaced it is carried on CLOCK_MONOTONIC, so a step of the system clock does not move it.
 * RKPTP_OK: the time is the master's. RKPTP_NOT_SYNCED (no sync so far) or RKPTP_NO_CLIENT: it is the
 * system's time. The time is always stored; null pointers are skipped.
 */
RKPTP_API int rkPTPGetTime_Nano(PTP_HANDLE handle, uint64_t *seconds, uint32_t *nanoseconds);

/*
 * How far the system clock is ahead of the master, in nanoseconds, with the UTC offset taken out.
 * RKPTP_OK: from a sync at most 3 s old. RKPTP_NOT_SYNCED: `*offset` is that of the last sync, or untouched
 * when there was none. RKPTP_NO_CLIENT: untouched. A null pointer: RKPTP_BAD_ARGUMENT.
 */
RKPTP_API int rkPTPGetOffset_Nano(PTP_HANDLE handle, int64_t *offset);

/* ---- Since 2.0 -------------------------------------------------------------------------------------
 * Why a client shows what it shows. Like the getters above these cost microseconds and wait for nothing.
 */

#define RKPTP_STATE_NOT_RUNNING 0   /* no client: null or ended handle, or address or domain are none */
#define RKPTP_STATE_STARTING 1      /* nothing has been heard of ptp4l yet */
#define RKPTP_STATE_LOCKED 2        /* status RKPTP_LOCKED */
#define RKPTP_STATE_OTHER_MASTER 3  /* syncs come in, of another grandmaster or domain than asked for */
#define RKPTP_STATE_NO_MASTER 4     /* nobody gives the time in this domain */
#define RKPTP_STATE_STALE 5         /* was locked; time and offset are carried on from the last sync */
#define RKPTP_STATE_NO_INTERFACE 6  /* no interface has the address, its link is down, or it is gone */
#define RKPTP_STATE_NOT_ALLOWED 7   /* no permission to open the ports 319 and 320 */
#define RKPTP_STATE_SYSTEM_CLIENT 8 /* another program has the ports on this interface and cannot be read */
#define RKPTP_STATE_FAILED 9        /* ptp4l or the launcher is missing, or ptp4l ended */

/* Returns one of the numbers above. */
RKPTP_API int rkPTPGetState(PTP_HANDLE handle);

/*
 * The same in words: one sentence of plain English, UTF-8, without a full stop, with what to do where
 * something can be done ("no master heard on eth1, domain 127, for 12 s; a master of domain 0 is heard").
 * Writes at most `size` bytes, its terminating zero among them, cut between two characters; 256 take every
 * text whole. Returns the size the whole text needs with its zero; a null buffer or a size of 0 only asks for
 * that. Every handle has a text.
 */
RKPTP_API int rkPTPGetReason(PTP_HANDLE handle, char *buffer, uint32_t size);

/*
 * Milliseconds since the sync that the offset of rkPTPGetOffset_Nano is from. RKPTP_OK; RKPTP_NOT_SYNCED
 * (there was none) and RKPTP_NO_CLIENT leave `*milliseconds` alone; a null pointer: RKPTP_BAD_ARGUMENT.
 */
RKPTP_API int rkPTPGetOffsetAge_Milli(PTP_HANDLE handle, uint32_t *milliseconds);

/*
 * 1 when what this handle shows is read from the system's own ptp4l, 0 otherwise. When another program has
 * the PTP ports on the interface ours does not run, as each would take datagrams away from the other. A ptp4l
 * whose management socket can be read (its read-only one, else the other where permissions allow) is then
 * asked instead, and never told anything. Any other program stops the client: RKPTP_STATE_SYSTEM_CLIENT. It
 * is looked for before a start and once a second from then on, so a client of the system that comes later
 * wins as well, and ours returns when that has gone.
 */
RKPTP_API int rkPTPUsesSystemClient(PTP_HANDLE handle);

/* A master that announces itself by multicast on the interfaces of a client. */
typedef struct RKPTP_MASTER {
    uint32_t size; /* of this structure, for later additions */
    uint32_t domain;
    char grandmaster[RKPTP_TEXT_SIZE]; /* "00-1D-C1-FF-FE-12-34-56" */
    char sourcePort[RKPTP_TEXT_SIZE];  /* who announced it: "00-1D-C1-FF-FE-12-34-56-1" */
    char interface[16];                /* "eth1" */
    uint8_t priority1;
    uint8_t clockClass;
    uint8_t clockAccuracy;
    uint8_t priority2;
    uint16_t variance;
    uint16_t stepsRemoved;
    uint32_t age_ms; /* since its last announce */
} RKPTP_MASTER;

/* Called without a lock: it may call the library. Non-zero ends the walk. */
typedef int (*RKPTP_MASTER_VISITOR)(void *context, const RKPTP_MASTER *master);

/*
 * Visits the masters of all domains, by domain and in each the best first, and returns how many were visited.
 * The first call makes the client listen for them, with a second process that can only hear multicast; until
 * the masters have announced themselves (every 2 s where nothing else is set) the list is not complete. A
 * client without a master listens by itself. Masters that send to one client at a time only (negotiated
 * unicast) are not heard.
 */
RKPTP_API int rkPTPForEachMaster(PTP_HANDLE handle, RKPTP_MASTER_VISITOR visitor, void *context);

/*
 * As rkPTPStart, for programs that run all the time and only want to tell: starts no process, opens no PTP
 * port and does not listen to the network. It shows what a ptp4l that runs already sees, the system's own or
 * one that another program of this user has started through this library. Without either, or after it has
 * ended, the state is RKPTP_STATE_NOT_RUNNING; it looks again every 5 s.
 */
RKPTP_API PTP_HANDLE rkPTPStartReading(const char *interfaceAddress);

#ifdef __cplusplus
}
#endif

#endif /* RKPTP_H */
