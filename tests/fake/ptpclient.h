// SPDX-License-Identifier: MIT
//
// A PTP client that only remembers. Linked into a test program it stands before the library of the same
// functions: what was asked of it is a list of lines, what it answers is set by the test.
#ifndef CORVEL_TEST_PTPCLIENT_H
#define CORVEL_TEST_PTPCLIENT_H

#include <QByteArray>
#include <QByteArrayList>

#include <cstdint>

struct PtpClient {
    // "start 10.0.0.1", "end", "domain 127", "target 00-1D-C1", in the order of the calls. Questions are
    // not listed.
    QByteArrayList calls;
    bool starts = true;    // false: rkPTPStart gives no client
    int running = 0;       // the client that is running, 0 for none
    bool hasOffset = true; // false: rkPTPGetOffset_Nano delivers nothing
    int64_t offset_ns = 0;
    uint64_t seconds = 0;
    uint32_t nanoseconds = 0;
    QByteArray version, domain, portId, address, grandmaster;
    bool addressAsked = false; // rkPTPGetIPAddress was called

    // What was called since the last time.
    QByteArrayList take()
    {
        QByteArrayList result;
        result.swap(calls);
        return result;
    }
};

// The one there is.
PtpClient &ptpClient();

#endif
