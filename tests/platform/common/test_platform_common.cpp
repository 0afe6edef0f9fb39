// SPDX-License-Identifier: MIT
#include "../rkos/surroundings.h"
#include "ethtool.h"
#include "privatefolder.h"
#include "text.h"
#include "utf8.h"

#include <QtTest>

#include <memory>

class TestPlatformCommon : public QObject {
    Q_OBJECT

    std::unique_ptr<Surroundings> m_home;

    // What runtimeFolders() offers, in order, each made or refused as the libraries do it.
    QByteArrayList usable() const
    {
        QByteArrayList found;
        for (const rk::RuntimeFolder &place : rk::runtimeFolders()) {
            const bool ours = QByteArray::fromStdString(place.path).startsWith(m_home->path(""));
            if (ours && rk::makePrivate(place.path, place.parents))
                found.append(QByteArray::fromStdString(place.path));
        }
        return found;
    }
    QByteArray temporary() const { return m_home->path("tmp/corvel-" + QByteArray::number(geteuid())); }

private slots:
    void init() { m_home = std::make_unique<Surroundings>(); }
    void cleanup() { m_home.reset(); }

    // ---- descriptors

    void aDescriptorClosesItselfOnce()
    {
        const int number = open("/dev/null", O_RDONLY | O_CLOEXEC);
        {
            rk::Descriptor first(number);
            const rk::Descriptor second(std::move(first));
            QVERIFY(!first.valid()); // NOLINT(bugprone-use-after-move): that is the question
            QCOMPARE(second.get(), number);
            QVERIFY(fcntl(number, F_GETFD) >= 0);
        }
        QCOMPARE(fcntl(number, F_GETFD), -1);
    }

    void anAssignedDescriptorClosesWhatItHeld()
    {
        const int held = open("/dev/null", O_RDONLY | O_CLOEXEC);
        rk::Descriptor one(held);
        rk::Descriptor other(open("/dev/null", O_RDONLY | O_CLOEXEC));
        const int taken = other.get();
        one = std::move(other);
        QCOMPARE(one.get(), taken);
        QCOMPARE(fcntl(held, F_GETFD), -1);
        QCOMPARE(one.release(), taken);
        QVERIFY(fcntl(taken, F_GETFD) >= 0);
        one.reset(taken);
    }

    void closingLeavesErrnoAlone()
    {
        rk::Descriptor bad(987654);
        errno = ENOSPC;
        bad.reset();
        QCOMPARE(errno, ENOSPC);
    }

    // ---- texts

    void trimming_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("nothing") << QByteArray("") << QByteArray("");
        QTest::newRow("blanks only") << QByteArray(" \t\r\n\v\f") << QByteArray("");
        QTest::newRow("both ends") << QByteArray("\t a b\r\n") << QByteArray("a b");
        QTest::newRow("nothing to do") << QByteArray("a") << QByteArray("a");
    }
    void trimming()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, expected);
        QCOMPARE(QByteArray::fromStdString(std::string(rk::trimmed(text.toStdString()))), expected);
    }

    void characters_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<uint>("code");
        QTest::addColumn<int>("length");
        const auto good = [](const char *name, const char *text, uint code, int length) {
            QTest::newRow(name) << QByteArray(text) << code << length;
        };
        good("letter", "ab", 'a', 1);
        good("two bytes", "\xc3\xbcx", 0xfc, 2);
        good("three bytes", "\xe2\x82\xac", 0x20ac, 3);
        good("four bytes", "\xf0\x9f\x8e\xa5", 0x1f3a5, 4);
        good("smallest of two", "\xc2\x80", 0x80, 2);
        good("smallest of three", "\xe0\xa0\x80", 0x800, 3);
        good("smallest of four", "\xf0\x90\x80\x80", 0x10000, 4);
        good("largest", "\xf4\x8f\xbf\xbf", 0x10ffff, 4);
        good("below the surrogates", "\xed\x9f\xbf", 0xd7ff, 3);
        good("above the surrogates", "\xee\x80\x80", 0xe000, 3);
        const auto bad = [](const char *name, const char *text) {
            QTest::newRow(name) << QByteArray(text) << 0U << 0;
        };
        bad("empty", "");
        bad("continuation", "\x80");
        bad("cut", "\xe2\x82");
        bad("cut by a letter", "\xe2\x82z");
        bad("too long for a letter", "\xc1\xa1");
        bad("too long of three", "\xe0\x9f\xbf");
        bad("too long of four", "\xf0\x8f\xbf\xbf");
        bad("surrogate", "\xed\xa0\x80");
        bad("last surrogate", "\xed\xbf\xbf");
        bad("beyond Unicode", "\xf4\x90\x80\x80");
        bad("five bytes", "\xf8\x88\x80\x80\x80");
        bad("no lead byte", "\xff");
    }
    void characters()
    {
        QFETCH(QByteArray, text);
        QFETCH(uint, code);
        QFETCH(int, length);
        const rk::Character found = rk::firstCharacter(text.toStdString());
        QCOMPARE(static_cast<int>(found.length), length);
        QCOMPARE(found.code, code);
    }

    // ---- time stamps

    void anInterfaceThatIsNoneSaysNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << QString();
        QTest::newRow("unknown") << QStringLiteral("none0");
        QTest::newRow("too long") << QString(300, QLatin1Char('x'));
    }
    void anInterfaceThatIsNoneSaysNothing()
    {
        QFETCH(QString, name);
        QVERIFY(!rk::timestampingOf(name.toStdString()));
    }

    void theLoopbackHasNoHardwareClock()
    {
        const auto info = rk::timestampingOf("lo");
        QVERIFY(!info || info->phc_index < 0);
    }

    // ---- the runtime folder

    void theSessionsFolderIsTheFirst()
    {
        QCOMPARE(usable(),
                 (QByteArrayList{m_home->path("run/corvel"), temporary(), m_home->path("state/corvel/run")}));
        QCOMPARE(modeOf(m_home->path("run/corvel")), 0700);
    }

    void aSessionsFolderThatBreaksItsPromiseIsNotUsed_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"unset", "relative", "missing", "open to a group", "a link", "a file"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void aSessionsFolderThatBreaksItsPromiseIsNotUsed()
    {
        QFETCH(QString, kind);
        const QByteArray run = m_home->path("run");
        const QByteArray other = m_home->path("documents");
        if (kind == QLatin1String("unset"))
            qunsetenv("XDG_RUNTIME_DIR");
        else if (kind == QLatin1String("relative"))
            qputenv("XDG_RUNTIME_DIR", "run");
        else if (kind == QLatin1String("open to a group"))
            QCOMPARE(chmod(run.constData(), 0710), 0);
        else
            QCOMPARE(rmdir(run.constData()), 0);
        if (kind == QLatin1String("a link"))
            QCOMPARE(symlink(other.constData(), run.constData()), 0);
        if (kind == QLatin1String("a file"))
            QVERIFY(putContent(run, "x"));
        QCOMPARE(usable(), (QByteArrayList{temporary(), m_home->path("state/corvel/run")}));
        QCOMPARE(QDir(QFile::decodeName(other)).count(), 2U);
    }

    void aSquattedNameLeavesTheOneInTheHome()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        QCOMPARE(symlink(m_home->path("documents").constData(), temporary().constData()), 0);
        QCOMPARE(usable(), QByteArrayList{m_home->path("state/corvel/run")});
        QCOMPARE(modeOf(m_home->path("state/corvel/run")), 0700);
    }
};

QTEST_GUILESS_MAIN(TestPlatformCommon)
#include "test_platform_common.moc"
