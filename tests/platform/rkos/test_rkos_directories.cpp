// SPDX-License-Identifier: MIT
#include "rkos.h"
#include "surroundings.h"
#include "userdirs.h"

#include <QtTest>

#include <memory>
#include <pwd.h>
#include <sstream>

class TestRkosDirectories : public QObject {
    Q_OBJECT

    std::unique_ptr<Surroundings> m_home;
    char m_buffer[RKOS_PATH_SIZE];

    QByteArray config()
    {
        memset(m_buffer, 'x', sizeof m_buffer);
        const int result = rkOSGetConfigDir(m_buffer);
        return result != 0 ? QByteArray(m_buffer) : QByteArray("failed:").append(m_buffer);
    }
    QByteArray documents()
    {
        memset(m_buffer, 'x', sizeof m_buffer);
        const int result = rkOSGetDocumentsDir(m_buffer);
        return result != 0 ? QByteArray(m_buffer) : QByteArray("failed:").append(m_buffer);
    }
    QByteArray temp(uint32_t size = 256)
    {
        memset(m_buffer, 'x', sizeof m_buffer);
        const int result = rkOSGetTempPath(m_buffer, size);
        return result != 0 ? QByteArray(m_buffer) : QByteArray("failed:").append(m_buffer);
    }

private slots:
    void init() { m_home = std::make_unique<Surroundings>(); }
    void cleanup() { m_home.reset(); }

    void configIsMadePrivate()
    {
        QCOMPARE(config(), m_home->path("config/corvel/"));
        QCOMPARE(modeOf(m_home->path("config/corvel")), 0700);
    }

    void configFallsBackToTheHome_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("unset") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("relative") << QByteArray("some/where");
    }
    void configFallsBackToTheHome()
    {
        QFETCH(QByteArray, value);
        if (value.isNull())
            qunsetenv("XDG_CONFIG_HOME");
        else
            qputenv("XDG_CONFIG_HOME", value);
        QCOMPARE(config(), m_home->path("/.config/corvel/").replace("//", "/"));
        QCOMPARE(modeOf(m_home->path(".config")), 0700);
    }

    void homeComesFromThePasswordsWhenUnset()
    {
        qunsetenv("HOME");
        qunsetenv("XDG_DOCUMENTS_DIR");
        const passwd *entry = getpwuid(geteuid());
        QVERIFY(entry != nullptr);
        QCOMPARE(documents(), QByteArray(entry->pw_dir) + "/Documents/");
    }

    void othersLoseTheirPermissions()
    {
        QVERIFY(mkdir(m_home->path("config/corvel").constData(), 0700) == 0);
        QVERIFY(chmod(m_home->path("config/corvel").constData(), 0777) == 0);
        QCOMPARE(config(), m_home->path("config/corvel/"));
        QCOMPARE(modeOf(m_home->path("config/corvel")), 0700);
    }

    void whatIsNoDirectoryOfOursIsRefused_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"link", "dangling link", "file", "pipe"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void whatIsNoDirectoryOfOursIsRefused()
    {
        QFETCH(QString, kind);
        const QByteArray name = m_home->path("config/corvel");
        if (kind == QLatin1String("link"))
            QVERIFY(symlink(m_home->path("tmp").constData(), name.constData()) == 0);
        else if (kind == QLatin1String("dangling link"))
            QVERIFY(symlink("/nonexistent/x", name.constData()) == 0);
        else if (kind == QLatin1String("file"))
            QVERIFY(putContent(name, "x"));
        else
            QVERIFY(mkfifo(name.constData(), 0600) == 0);
        QCOMPARE(config(), QByteArray("failed:"));
    }

    void anotherOwnersDirectoryIsRefused()
    {
        if (geteuid() == 0)
            QVERIFY(mkdir(m_home->path("config/corvel").constData(), 0700) == 0 &&
                    chown(m_home->path("config/corvel").constData(), 12345, 12345) == 0);
        else
            qputenv("XDG_CONFIG_HOME", "/proc/1"); // root's: nothing can be made in it
        QCOMPARE(config(), QByteArray("failed:"));
    }

    void aNameThatDoesNotFitFails()
    {
        QByteArray deep = m_home->path("");
        while (deep.size() < 4200)
            deep += "d123456789d123456789d123456789d123456789/";
        qputenv("XDG_CONFIG_HOME", deep);
        qputenv("XDG_DOCUMENTS_DIR", deep);
        QCOMPARE(config(), QByteArray("failed:"));
        QCOMPARE(documents(), QByteArray("failed:"));
    }

    void nullBuffersFail()
    {
        QCOMPARE(rkOSGetConfigDir(nullptr), 0);
        QCOMPARE(rkOSGetDocumentsDir(nullptr), 0);
        QCOMPARE(rkOSGetTempPath(nullptr, 256), 0);
        QCOMPARE(rkOSGetTempPath(m_buffer, 0), 0);
    }

    // ---- documents

    void documentsByTheEnvironmentEndInOneSlash_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("plain") << QByteArray("/a/b") << QByteArray("/a/b/");
        QTest::newRow("slash") << QByteArray("/a/b/") << QByteArray("/a/b/");
        QTest::newRow("slashes") << QByteArray("/a/b///") << QByteArray("/a/b/");
        QTest::newRow("root") << QByteArray("/") << QByteArray("/");
        QTest::newRow("utf-8") << QByteArray("/\xc3\xbc") << QByteArray("/\xc3\xbc/");
    }
    void documentsByTheEnvironmentEndInOneSlash()
    {
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, expected);
        qputenv("XDG_DOCUMENTS_DIR", value);
        QCOMPARE(documents(), expected);
    }

    void documentsAreNotCreated()
    {
        qputenv("XDG_DOCUMENTS_DIR", m_home->path("none"));
        QCOMPARE(documents(), m_home->path("none/"));
        QCOMPARE(rkOSFileExists(m_home->path("none").constData()), 0);
    }

    void documentsByTheDesktopsList()
    {
        qunsetenv("XDG_DOCUMENTS_DIR");
        QVERIFY(putContent(m_home->path("config/user-dirs.dirs"),
                           "# written by the desktop\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"));
        QCOMPARE(documents(), m_home->path("/Dokumente/").replace("//", "/"));
    }

    void documentsWithoutAListAreBelowTheHome()
    {
        qputenv("XDG_DOCUMENTS_DIR", "relative");
        QCOMPARE(documents(), m_home->path("/Documents/").replace("//", "/"));
    }

    void aPipeInThePlaceOfTheListDoesNotHang()
    {
        qunsetenv("XDG_DOCUMENTS_DIR");
        QVERIFY(mkfifo(m_home->path("config/user-dirs.dirs").constData(), 0600) == 0);
        QCOMPARE(documents(), m_home->path("/Documents/").replace("//", "/"));
    }

    void listLines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(expected);
        };
        row("below home", "DOC=\"$HOME/x\"", "/h/x");
        row("home itself", "DOC=\"$HOME\"", "/h");
        row("absolute", "DOC=\"/x y\"", "/x y");
        row("blanks", "  DOC = \"/x\"  # why", "/x");
        row("escapes", "DOC=\"/a\\\"b\\\\c\\$d\"", "/a\"b\\c$d");
        row("last wins", "DOC=\"/a\"\nDOC=\"/b\"", "/b");
        row("bad last is skipped", "DOC=\"/a\"\nDOC=\"b\"", "/a");
        row("relative", "DOC=\"x\"", "none");
        row("empty", "DOC=\"\"", "none");
        row("no quotes", "DOC=/x", "none");
        row("no end quote", "DOC=\"/x", "none");
        row("backslash at the end", "DOC=\"/x\\", "none");
        row("other variable", "DOC=\"$HOMER/x\"", "none");
        row("longer key", "DOCS=\"/x\"", "none");
        row("comment", "#DOC=\"/x\"", "none");
        row("key only", "DOC", "none");
        row("no text", "", "none");
    }
    void listLines()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        std::istringstream stream(text.toStdString());
        const auto found = rkos::userDir(stream, "DOC", "/h");
        QCOMPARE(QString::fromStdString(found.value_or("none")), expected);
    }

    // ---- temporary files

    void tempIsPrivateInTheRuntimeDirectory()
    {
        QCOMPARE(temp(), m_home->path("run/corvel/"));
        QCOMPARE(modeOf(m_home->path("run/corvel")), 0700);
    }

    void anOpenRuntimeDirectoryIsNotTrusted()
    {
        QVERIFY(chmod(m_home->path("run").constData(), 0755) == 0);
        const QByteArray own = "tmp/corvel-" + QByteArray::number(geteuid());
        QCOMPARE(temp(), m_home->path(own + '/'));
        QCOMPARE(modeOf(m_home->path(own)), 0700);
    }

    void aPlantedTempDirectoryIsPassedOver()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        const QByteArray own = m_home->path("tmp/corvel-" + QByteArray::number(geteuid()));
        QVERIFY(symlink(m_home->path("documents").constData(), own.constData()) == 0);
        const QByteArray found = temp();
        QVERIFY2(found.startsWith("/tmp/corvel-") || found == m_home->path("state/corvel/run/"),
                 found.constData());
        QCOMPARE(QDir(QFile::decodeName(m_home->path("documents"))).count(), 2U);
    }

    void theSizeIsKept_data()
    {
        QTest::addColumn<int>("spare");
        QTest::addColumn<bool>("fits");
        QTest::newRow("exactly") << 0 << true;
        QTest::newRow("one less") << -1 << false;
        QTest::newRow("plenty") << 100 << true;
    }
    void theSizeIsKept()
    {
        QFETCH(int, spare);
        QFETCH(bool, fits);
        const QByteArray best = m_home->path("run/corvel/");
        const int size = best.size() + 1 + spare;
        const QByteArray found = temp(static_cast<uint32_t>(size));
        QCOMPARE(found == best, fits);
        QCOMPARE(m_buffer[size], 'x');
    }

    void aTinyBufferGivesAnEmptyText()
    {
        QCOMPARE(temp(1), QByteArray("failed:"));
        QCOMPARE(temp(5), QByteArray("failed:"));
        QCOMPARE(m_buffer[5], 'x');
    }

    // ---- making directories

    void modeIsReadByItsDigits_data()
    {
        QTest::addColumn<int>("digits");
        QTest::addColumn<int>("expected");
        QTest::newRow("777") << 777 << 0755;
        QTest::newRow("700") << 700 << 0700;
        QTest::newRow("70") << 70 << 050;
        QTest::newRow("1777") << 1777 << 01755;
        QTest::newRow("8") << 778 << -1;
        QTest::newRow("9") << 977 << -1;
        QTest::newRow("negative") << -777 << -1;
        QTest::newRow("five digits") << 10777 << -1;
        QTest::newRow("largest") << INT_MAX << -1;
        QTest::newRow("smallest") << INT_MIN << -1;
    }
    void modeIsReadByItsDigits()
    {
        QFETCH(int, digits);
        QFETCH(int, expected);
        const mode_t before = umask(022);
        const int result = rkOSMakeDir(m_home->path("made").constData(), digits);
        umask(before);
        QCOMPARE(result != 0, expected >= 0);
        QCOMPARE(modeOf(m_home->path("made")), expected);
    }

    void parentsAreMadeToo()
    {
        const mode_t before = umask(022);
        QVERIFY(rkOSMakeDir(m_home->path("a//b/2110/").constData(), 777) != 0);
        umask(before);
        QCOMPARE(modeOf(m_home->path("a")), 0755);
        QCOMPARE(modeOf(m_home->path("a/b/2110")), 0755);
        QVERIFY(rkOSFileExists(m_home->path("a/b/2110/").constData()) != 0);
    }

    void whatIsThereAlreadyIsFine()
    {
        QVERIFY(rkOSMakeDir(m_home->path("made").constData(), 700) != 0);
        QVERIFY(rkOSMakeDir(m_home->path("made").constData(), 777) != 0);
        QCOMPARE(modeOf(m_home->path("made")), 0700);
    }

    void whatCannotBeMadeFails()
    {
        QVERIFY(putContent(m_home->path("file"), "x"));
        QCOMPARE(rkOSMakeDir(m_home->path("file").constData(), 777), 0);
        QCOMPARE(rkOSMakeDir(m_home->path("file/x").constData(), 777), 0);
        QCOMPARE(rkOSMakeDir(nullptr, 777), 0);
        QCOMPARE(rkOSMakeDir("", 777), 0);
        QCOMPARE(rkOSMakeDir("/proc/none/x", 777), 0);
        QCOMPARE(rkOSMakeDir(QByteArray(5000, 'n').prepend('/').constData(), 777), 0);
        QCOMPARE(contentOf(m_home->path("file")), QByteArray("x"));
    }
};

QTEST_GUILESS_MAIN(TestRkosDirectories)
#include "test_rkos_directories.moc"
