// SPDX-License-Identifier: MIT
//
// An empty folder for the store of one test case.
#ifndef TESTS_OPS_FRESHHOME_H
#define TESTS_OPS_FRESHHOME_H

#include "ops/inputfile.h"
#include "rkcfg.h"

#include <QTemporaryDir>
#include <QtTest>

class FreshHome {
public:
    FreshHome()
    {
        qputenv("XDG_CONFIG_HOME", m_folder.path().toUtf8());
        rkCFGClose(RKCFG_DEFAULT_STORE, 0);
    }
    ~FreshHome() { rkCFGClose(RKCFG_DEFAULT_STORE, 0); }
    FreshHome(const FreshHome &) = delete;
    FreshHome &operator=(const FreshHome &) = delete;

    QByteArray path(const QByteArray &name) const { return m_folder.path().toUtf8() + '/' + name; }
    // A file with that content, and its path.
    QByteArray file(const QByteArray &name, const QByteArray &content) const
    {
        [&] { QVERIFY(ops::writeOutput(path(name), content)); }();
        return path(name);
    }

private:
    QTemporaryDir m_folder;
};

#endif
