// SPDX-License-Identifier: MIT
#ifndef RKPTP_CHILD_H
#define RKPTP_CHILD_H

// One ptp4l and the conversation with it: questions over its socket, one in flight, and what they add up to.
// Used by the worker thread only; nothing here blocks.

#include "binders.h"
#include "management.h"
#include "process.h"
#include "runfolder.h"
#include "snapshot.h"

#include <poll.h>

namespace rkptp {

/* What a ptp4l was started for; a client with the same wish may take it over. */
struct ChildKey {
    uint32_t address = 0;
    uint32_t domain = 0;

    std::string text() const { return std::to_string(address) + "/" + std::to_string(domain); }
};

inline bool operator==(const ChildKey &a, const ChildKey &b)
{
    return a.address == b.address && a.domain == b.domain;
}

class Child {
public:
    /* `carried` is the time of a predecessor that broke down, to bridge the gap with. */
    Child(const ChildKey &key, std::vector<Interface> interfaces, const CarriedTime &carried);
    ~Child();

    /* Starts ptp4l through `launcher`, with the sockets in `folder` named after `number`. 0 or an errno
     * value. */
    int start(const std::string &launcher, const RunFolder &folder, unsigned number, int64_t now);

    /* Asks the system's own ptp4l instead of starting one: questions only, nothing is ever set. False when
       none of its sockets can be reached. */
    bool visit(const SystemClient &client, const RunFolder &folder, unsigned number, int64_t now);
    bool ofSystem() const { return m_visiting; }

    /* It answers on none of our interfaces, or not at all: not the one that was looked for. */
    bool mistaken(int64_t now) const;

    const ChildKey &key() const { return m_key; }
    const std::vector<Interface> &interfaces() const { return m_interfaces; }
    Process &process() { return m_process; }
    int socketFd() const { return m_socket.get(); }
    int64_t startedAt() const { return m_startedAt; }

    /* Reads an answer, sends what is due. True when a round of questions was completed: view() has changed.
     */
    bool converse(int64_t now);

    /* When converse() wants to be called next, without an answer. */
    int64_t nextDue() const { return m_due; }

    /* No answer for ten seconds: stopped or hung. */
    bool silent(int64_t now) const;

    /* The interfaces are not those any more that this ptp4l was started on. */
    bool outdated() const { return m_outdated; }

    /* What the last completed round says. */
    Snapshot view() const;

    /* Asks ptp4l to end; forceEnd() is due two seconds later. */
    void askToEnd(int64_t now);
    void forceEnd();
    bool ending() const { return m_killAt != 0; }
    int64_t killAt() const { return m_killAt; }

private:
    struct Observation {
        DefaultData clock;
        CurrentData current;
        ParentData parent;
        TimePropertiesData timeProperties;
        TimeStatusData timeStatus;
        GrandmasterSettingsData settings;
        std::vector<PortData> ports;
        std::vector<std::string> portNames;
    };

    bool openSocket();
    void planRound();
    void planSearch();
    void meet(const DefaultData &clock);
    bool reach(const std::string &path);
    bool servesUs() const;
    SyncSample sample(ClockReading &clocks) const;
    bool ask(int64_t now);
    bool takeAnswers();
    void store(const Answer &answer);
    bool finishRound(int64_t now);
    void checkInterfaces(bool locked);
    void giveUpRound(int64_t now);
    bool usable(size_t port) const;
    const PortData *followed() const;
    std::string addressOf(const PortData *port) const;
    ClientState state() const;

    ChildKey m_key;
    std::vector<Interface> m_interfaces;
    std::vector<bool> m_gone; // per interface
    ClockId m_identity;
    Process m_process;
    Descriptor m_socket;
    std::string m_ownPath;
    std::string m_peerPath;
    bool m_connected = false;

    std::vector<Question> m_round;
    size_t m_next = 0; // the question in flight, or to be asked
    bool m_inFlight = false;
    uint16_t m_sequence = 0;
    unsigned m_rounds = 0; // completed
    int64_t m_due = 0;
    int64_t m_lastAnswer = 0;
    int64_t m_startedAt = 0;
    int64_t m_killAt = 0;
    bool m_outdated = false;
    bool m_visiting = false;       // the system's ptp4l, not ours
    std::vector<uint8_t> m_search; // domains in which it may run; its answer empties this
    size_t m_tried = 0;
    uint8_t m_domain = 0; // in which it is asked

    Observation m_seen;
    Timebase m_timebase;
};

} // namespace rkptp

#endif // RKPTP_CHILD_H
