// SPDX-License-Identifier: MIT
//
// The sections of a settings file, from the store. Each is of one moment while the store can be had for that,
// and read as one it takes a third of the time. A call may block for as long as the store does.
#ifndef CORVEL_STOREDSECTIONS_H
#define CORVEL_STOREDSECTIONS_H

#include <QByteArray>

class StoredSections {
public:
    explicit StoredSections(int flows) : m_flows(flows) {}
    QByteArray section(int channel);

private:
    const int m_flows;
    bool m_canBeHad = true; // who has to wait for the store waits once, not for each section
};

#endif
