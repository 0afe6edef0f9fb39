// SPDX-License-Identifier: MIT
//
// Another process that holds the store and does not let go until it is told.
#ifndef CORVEL_TEST_STOREHOLDER_H
#define CORVEL_TEST_STOREHOLDER_H

#include "rkcfg.h"

#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

class StoreHolder {
public:
    // work is done inside its transaction, which is kept or taken back when it lets go.
    explicit StoreHolder(
        const std::function<void()> &work = [] {}, bool keep = true)
    {
        QVERIFY(pipe2(m_held, O_CLOEXEC) == 0 && pipe2(m_release, O_CLOEXEC) == 0);
        m_process = fork();
        if (m_process == 0)
            hold(work, keep);
        char byte = 0;
        QCOMPARE(::read(m_held[0], &byte, 1), ssize_t(1));
        QCOMPARE(int(byte), 1);
    }
    ~StoreHolder() { release(); }
    StoreHolder(const StoreHolder &) = delete;
    StoreHolder &operator=(const StoreHolder &) = delete;

    void release()
    {
        if (m_process == 0)
            return;
        for (const int end : {m_held[0], m_held[1], m_release[0], m_release[1]})
            close(end);
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = 0;
        QCOMPARE(status, 0);
    }

private:
    [[noreturn]] void hold(const std::function<void()> &work, bool keep)
    {
        close(m_release[1]);
        char byte = rkCFGBegin(RKCFG_DEFAULT_STORE) == 0;
        work();
        const bool told = ::write(m_held[1], &byte, 1) == 1 && ::read(m_release[0], &byte, 1) == 0;
        _exit(told && rkCFGEnd(RKCFG_DEFAULT_STORE, keep) == 0 ? 0 : 1);
    }

    int m_held[2] = {}, m_release[2] = {};
    pid_t m_process = 0;
};

#endif
