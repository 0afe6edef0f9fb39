// SPDX-License-Identifier: MIT
#ifndef RKPTP_SNAPSHOT_H
#define RKPTP_SNAPSHOT_H

// What the getters read: plain bytes, written by the worker, copied under the mutex.

#include "interfaces.h"
#include "rkptp.h"
#include "timebase.h"

#include <array>
#include <cstdio>

namespace rkptp {

enum class ClientState {
    None, // no client can run
    Starting,
    Listening,
    Following, // ptp4l follows a master; locked or not is decided by the age of the last sync
    Faulty,
};

/* What rkPTPSetTargetMacAddress asked for. */
struct GrandmasterWish {
    bool any = true;
    ClockId id{}; // all zero when the text could not be read: no grandmaster has that, so none fits

    bool accepts(const ClockId &grandmaster) const { return any || id == grandmaster; }
};

inline bool operator==(const GrandmasterWish &a, const GrandmasterWish &b)
{
    return a.any == b.any && a.id == b.id;
}

enum class Text { Version, Domain, SourcePort, Address, Grandmaster, Count };

/* Why there is no client. */
enum class Trouble { None, NoInterface, NotAllowed, SystemClient, Failed };

struct Snapshot {
    ClientState state = ClientState::Starting;
    Trouble trouble = Trouble::None;
    bool ofSystem = false;             // seen through the system's own ptp4l
    bool isMaster = false;             // which gives the time itself
    bool otherDomain = false;          // or runs in another domain than the one asked for
    int64_t since = 0;                 // CLOCK_MONOTONIC, when this state began
    std::array<char, 64> interfaces{}; // "eth1", "eth0 and eth1"
    std::array<char, 240> detail{};    // of the trouble, one sentence
    CarriedTime carried;
    ClockId grandmaster{};
    std::array<std::array<char, RKPTP_TEXT_SIZE>, static_cast<size_t>(Text::Count)> texts{};

    const std::array<char, RKPTP_TEXT_SIZE> &text(Text which) const
    {
        return texts[static_cast<size_t>(which)];
    }
    void setInterfaces(const std::vector<Interface> &list)
    {
        std::string names;
        for (size_t i = 0; i < list.size(); ++i)
            names += (i == 0 ? "" : i + 1 == list.size() ? " and " : ", ") + list[i].name;
        snprintf(interfaces.data(), interfaces.size(), "%s", names.c_str());
    }
    void setText(Text which, const std::string &value)
    {
        snprintf(texts[static_cast<size_t>(which)].data(), RKPTP_TEXT_SIZE, "%s", value.c_str());
    }
};

/* The status number at the time `mono` (CLOCK_MONOTONIC). A worker that hangs cannot keep a client locked. */
inline int statusOf(const Snapshot &snapshot, const GrandmasterWish &wish, int64_t mono)
{
    switch (snapshot.state) {
    case ClientState::None:
        return RKPTP_NO_CLIENT;
    case ClientState::Starting:
        return RKPTP_STARTING;
    case ClientState::Faulty:
        return RKPTP_PORT_FAULTY;
    case ClientState::Listening:
    case ClientState::Following:
        break;
    }
    if (snapshot.state == ClientState::Following && snapshot.carried.freshAt(mono))
        return wish.accepts(snapshot.grandmaster) && !snapshot.otherDomain ? RKPTP_LOCKED
                                                                           : RKPTP_OTHER_GRANDMASTER;
    return snapshot.carried.valid ? RKPTP_SYNC_LOST : RKPTP_LISTENING;
}

} // namespace rkptp

#endif // RKPTP_SNAPSHOT_H
