// SPDX-License-Identifier: MIT
//
// What the gates of the fleet share: a plant with one server and one desk, somebody who works at each
// (fleethand), and what both stores have to be in the end. Everything real: three members of etcd, the built
// service, stores on disk.
#ifndef CAMPAIGN_FLEETSITE_H
#define CAMPAIGN_FLEETSITE_H

#include "campaign.h"
#include "fleet/machine.h"

#include <array>
#include <functional>
#include <map>

// Somebody at one machine's store.
class Hand {
public:
    Hand(const Machine &machine, const QString &configuration);
    ~Hand();

    // How long the slowest took; -1: the store refused it.
    qint64 editUs(int channel, int count, quint32 number);
    // From now on it waits for a number; seen() returns when it is there. Nothing else in between.
    void await(int channel, quint32 number);
    bool seen();
    std::map<int, QByteArray> dump(); // number or "torn" by channel
    int repeats();                    // values that the store got more than once

private:
    QByteArray ask(const QByteArray &line);
    QByteArray answer();

    QProcess m_process;
};

class FleetSite {
public:
    static constexpr int kServer = 0;
    static constexpr int kDesk = 1;

    explicit FleetSite(campaign::Problems &problems) : m_problems(problems) {}

    // False, and a problem, when it does not come up.
    bool start(const QStringList &serverLauncher = {});
    Plant &plant() { return m_plant; }
    Machine &machine(int side) { return side == kServer ? *m_server : *m_desk; }
    Hand &hand(int side) { return *m_hands[static_cast<std::size_t>(side)]; }

    // One edit; from then on that is what there has to be, unless `counts` is false.
    void edit(int side, int channel, bool counts = true);
    quint32 lastNumber() const { return m_number; }
    const std::map<int, QByteArray> &expected() const { return m_expected; }
    long edits() const { return m_edits; }
    double slowestMs() const { return static_cast<double>(m_slowestUs) / 1000; }
    bool equal();
    // Milliseconds until both stores are as expected; a problem when they never are.
    qint64 untilEqual(const char *after);
    // Overruled documents that the cluster keeps.
    QByteArrayList conflicts() const;

private:
    void tellDifference(const char *after);

    campaign::Problems &m_problems;
    Plant m_plant;
    std::unique_ptr<Machine> m_server, m_desk;
    std::array<std::unique_ptr<Hand>, 2> m_hands;
    std::map<int, QByteArray> m_expected;
    quint32 m_number = 0;
    long m_edits = 0;
    qint64 m_slowestUs = 0;
};

// The frame of a gate's main(): brings a site up and lets work do the rest, which ends with finish().
int onSite(int argc, char **argv, const std::function<int(FleetSite &, campaign::Problems &)> &work);

#endif
