// SPDX-License-Identifier: MIT
#ifndef PTPCLIENT_H
#define PTPCLIENT_H

// A client of the library under test, and the log lines it writes.

#include "rkptp.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QtTest>

#include <ctime>

constexpr qint64 kNanosPerSecond = 1000000000;
constexpr qint64 tolerance = kNanosPerSecond / 1000; // of a client's time
constexpr int lockTimeout = 60000;                   // ms; generous, a loaded machine is no failure

/* The lines written to the log since the last call. ErrOut of rkos is replaced in these programs. */
QByteArrayList takeLog();

inline qint64 systemTime()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec * kNanosPerSecond + now.tv_nsec;
}

using TextGetter = int (*)(PTP_HANDLE, char *);

inline QByteArray textOf(TextGetter getter, PTP_HANDLE handle)
{
    char buffer[RKPTP_TEXT_SIZE];
    memset(buffer, 'x', sizeof buffer);
    getter(handle, buffer);
    return QByteArray(buffer);
}

// A client that ends with its scope.
class TestClient {
public:
    explicit TestClient(unsigned domain, const char *address = "10.9.0.1") : m_handle(rkPTPStart(address))
    {
        rkPTPSetTargetDomain(m_handle, domain);
        rkPTPSetTargetMacAddress(m_handle, "");
    }
    ~TestClient() { rkPTPEnd(m_handle); }
    TestClient(const TestClient &) = delete;
    TestClient &operator=(const TestClient &) = delete;

    PTP_HANDLE handle() const { return m_handle; }
    int status() const { return rkPTPGetStatus(m_handle, 0); }
    QByteArray grandmaster() const { return textOf(rkPTPGetGrandmasterID, m_handle); }

    // How far the client's time is from the master's, which runs on the clock of this machine. All masters
    // here hand out the system's time, whatever they say about the timescale.
    qint64 error(int *result = nullptr) const
    {
        uint64_t seconds = 0;
        uint32_t nanoseconds = 0;
        const qint64 before = systemTime();
        const int code = rkPTPGetTime_Nano(m_handle, &seconds, &nanoseconds);
        const qint64 after = systemTime();
        if (result)
            *result = code;
        const qint64 time = static_cast<qint64>(seconds) * kNanosPerSecond + nanoseconds;
        return time < before ? time - before : time > after ? time - after : 0;
    }

    // The largest error, looked at all the while until so many new offsets have come from the master. Far
    // beyond any tolerance when they do not come.
    qint64 worstError(int offsets) const
    {
        qint64 worst = 0;
        int64_t last = 0;
        rkPTPGetOffset_Nano(m_handle, &last);
        const auto came = [&] {
            worst = qMax(worst, qAbs(error()));
            int64_t offset = last;
            rkPTPGetOffset_Nano(m_handle, &offset);
            offsets -= offset != last;
            last = offset;
            return offsets <= 0;
        };
        return QTest::qWaitFor(came, 2 * lockTimeout) ? worst : 1000 * kNanosPerSecond;
    }

private:
    PTP_HANDLE m_handle;
};

#endif // PTPCLIENT_H
