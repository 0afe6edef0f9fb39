// SPDX-License-Identifier: MIT
#include "rkos.h"
#include "surroundings.h"

#include <QtTest>

#include <atomic>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t readAccess = RKOS_GENERIC_READ;
constexpr uint32_t writeAccess = RKOS_GENERIC_WRITE;
constexpr uint32_t bothAccess = RKOS_GENERIC_READ | RKOS_GENERIC_WRITE;

uint64_t openFile(const QByteArray &path, uint32_t access, uint32_t disposition)
{
    return rkOSCreateFile(path.constData(), access, RKOS_SHARE_READ, nullptr, disposition,
                          RKOS_ATTRIBUTE_NORMAL, nullptr);
}

int openDescriptors()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).count());
}

} // namespace

class TestRkosFiles : public QObject {
    Q_OBJECT

    std::unique_ptr<Surroundings> m_home;

    QByteArray file() const { return m_home->path("documents/file"); }
    QByteArray log() const { return contentOf(m_home->path("state/corvel/files.log")); }

    // All lines of a text, read with buffers of `size` bytes.
    QList<QByteArray> lines(const QByteArray &content, int size)
    {
        QList<QByteArray> found;
        if (!putContent(file(), content))
            return {"cannot write"};
        const uint64_t handle = openFile(file(), readAccess, RKOS_OPEN_EXISTING);
        QByteArray buffer(size + 1, '\x55');
        while (char *line = rkOSfgets(buffer.data(), size, handle)) {
            if (line != buffer.data() || buffer[size] != '\x55')
                return {"wrong buffer"};
            found.append(QByteArray(line));
        }
        rkOSCloseFile(handle);
        return found;
    }

private slots:
    void init()
    {
        m_home = std::make_unique<Surroundings>();
        ErrLogSetFileName("files");
    }
    void cleanup()
    {
        ErrLogSetFileName(nullptr);
        m_home.reset();
    }

    // ---- opening

    void dispositions_data()
    {
        QTest::addColumn<quint32>("disposition");
        QTest::addColumn<bool>("there");
        QTest::addColumn<bool>("opens");
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *name, quint32 disposition, bool there, bool opens,
                            const char *after) {
            QTest::newRow(name) << disposition << there << opens << QByteArray(after);
        };
        const char *const none = "(cannot be read)";
        row("new, missing", 1, false, true, "");
        row("new, there", 1, true, false, "old");
        row("always, missing", 2, false, true, "");
        row("always, there", 2, true, true, "");
        row("existing, missing", 3, false, false, none);
        row("existing, there", 3, true, true, "old");
        row("open always, missing", 4, false, true, "");
        row("open always, there", 4, true, true, "old");
        row("truncate, missing", 5, false, false, none);
        row("truncate, there", 5, true, true, "");
        row("0", 0, true, false, "old");
        row("6", 6, true, false, "old");
        row("all bits", 0xffffffff, true, false, "old");
    }
    void dispositions()
    {
        QFETCH(quint32, disposition);
        QFETCH(bool, there);
        QFETCH(bool, opens);
        QFETCH(QByteArray, content);
        if (there)
            QVERIFY(putContent(file(), "old"));
        const uint64_t handle = openFile(file(), bothAccess, disposition);
        QCOMPARE(handle != RKOS_INVALID_HANDLE, opens);
        QVERIFY(handle != 0);
        QCOMPARE(rkOSCloseFile(handle) != 0, opens);
        QCOMPARE(contentOf(file()), content);
    }

    void accessIsKept_data()
    {
        QTest::addColumn<quint32>("access");
        QTest::addColumn<bool>("reads");
        QTest::addColumn<bool>("writes");
        QTest::newRow("read") << readAccess << true << false;
        QTest::newRow("write") << writeAccess << false << true;
        QTest::newRow("both") << bothAccess << true << true;
    }
    void accessIsKept()
    {
        QFETCH(quint32, access);
        QFETCH(bool, reads);
        QFETCH(bool, writes);
        QVERIFY(putContent(file(), "line\n"));
        const uint64_t handle = openFile(file(), access, RKOS_OPEN_EXISTING);
        char line[16];
        QCOMPARE(rkOSfgets(line, sizeof line, handle) != nullptr, reads);
        QCOMPARE(rkOSfputs("x", handle) > 0, writes);
        uint32_t written = 7;
        QCOMPARE(rkOSWriteFile(handle, "y", 1, &written, nullptr) != 0, writes);
        QCOMPARE(written, writes ? 1U : 0U);
        QVERIFY(rkOSCloseFile(handle) != 0);
    }

    void withoutAccessNothingOpens()
    {
        QVERIFY(putContent(file(), "old"));
        QCOMPARE(openFile(file(), 0, RKOS_OPEN_EXISTING), RKOS_INVALID_HANDLE);
        QCOMPARE(openFile(file(), 1, RKOS_OPEN_EXISTING), RKOS_INVALID_HANDLE);
        QCOMPARE(openFile(file(), readAccess, RKOS_TRUNCATE_EXISTING), RKOS_INVALID_HANDLE);
        QCOMPARE(contentOf(file()), QByteArray("old"));
    }

    void createAlwaysForReadingEmptiesToo()
    {
        QVERIFY(putContent(file(), "old"));
        const uint64_t handle = openFile(file(), readAccess, RKOS_CREATE_ALWAYS);
        QVERIFY(handle != RKOS_INVALID_HANDLE);
        QVERIFY(rkOSfputs("x", handle) < 0);
        rkOSCloseFile(handle);
        QCOMPARE(contentOf(file()), QByteArray());
    }

    void userFilesFollowTheUmask()
    {
        const mode_t before = umask(027);
        rkOSCloseFile(openFile(file(), writeAccess, RKOS_CREATE_ALWAYS));
        umask(before);
        QCOMPARE(modeOf(file()), 0640);
    }

    void userFilesMayBeLinks()
    {
        QVERIFY(putContent(m_home->path("documents/target"), "old"));
        QVERIFY(symlink("target", file().constData()) == 0);
        const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        QVERIFY(rkOSfputs("new", handle) > 0);
        rkOSCloseFile(handle);
        QCOMPARE(contentOf(m_home->path("documents/target")), QByteArray("new"));
    }

    void onlyRegularFilesOpen_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"directory", "pipe", "socket", "device", "terminal", "link to a pipe",
                                 "link to itself", "nothing", "empty path", "null", "too long"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void onlyRegularFilesOpen()
    {
        QFETCH(QString, kind);
        QByteArray path = file();
        if (kind == QLatin1String("directory"))
            QVERIFY(mkdir(path.constData(), 0700) == 0);
        if (kind == QLatin1String("pipe"))
            QVERIFY(mkfifo(path.constData(), 0600) == 0);
        if (kind == QLatin1String("socket")) {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
            const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
            QVERIFY(bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0);
            close(fd);
        }
        if (kind == QLatin1String("device"))
            path = "/dev/null";
        if (kind == QLatin1String("terminal"))
            path = "/dev/tty";
        if (kind == QLatin1String("link to a pipe")) {
            QVERIFY(mkfifo(m_home->path("pipe").constData(), 0600) == 0);
            QVERIFY(symlink(m_home->path("pipe").constData(), path.constData()) == 0);
        }
        if (kind == QLatin1String("link to itself"))
            QVERIFY(symlink("file", path.constData()) == 0);
        if (kind == QLatin1String("nothing"))
            path = m_home->path("documents/none/none");
        if (kind == QLatin1String("empty path"))
            path = "";
        if (kind == QLatin1String("too long"))
            path += QByteArray(5000, 'n');
        const char *name = kind == QLatin1String("null") ? nullptr : path.constData();
        const int before = openDescriptors();
        for (const uint32_t access : {readAccess, writeAccess, bothAccess}) {
            for (uint32_t disposition = 0; disposition < 7; ++disposition)
                QCOMPARE(rkOSCreateFile(name, access, 1, nullptr, disposition, 128, nullptr),
                         RKOS_INVALID_HANDLE);
        }
        QCOMPARE(openDescriptors(), before);
    }

    void descriptorsAreClosedOnExec()
    {
        const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        int found = 0;
        for (const QString &entry :
             QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System)) {
            const int fd = entry.toInt();
            const QString target = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/") + entry);
            if (target != QFile::decodeName(file()))
                continue;
            ++found;
            QVERIFY((fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0);
            QVERIFY((fcntl(fd, F_GETFL) & O_NONBLOCK) == 0);
        }
        QCOMPARE(found, 1);
        rkOSCloseFile(handle);
    }

    void closedStandardStreamsAreNotReplaced()
    {
        const int result = inSecondProcess([this] {
            for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                close(fd);
            const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
            ErrOut("opens the log");
            const uint64_t event = rkOSCreateEvent("files");
            int taken = 0;
            for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                taken += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
            const bool good = handle != RKOS_INVALID_HANDLE && event != RKOS_INVALID_HANDLE;
            return good ? taken : 10;
        });
        QCOMPARE(result, 0);
        QCOMPARE(log().count("opens the log"), 1);
    }

    // ---- handles

    void wrongHandlesAreRefused_data()
    {
        QTest::addColumn<quint64>("handle");
        QTest::newRow("0") << quint64(0);
        QTest::newRow("all ones") << quint64(RKOS_INVALID_HANDLE);
        for (quint64 fd = 1; fd < 20; ++fd)
            QTest::addRow("descriptor %d", int(fd)) << fd;
        QTest::newRow("32-bit all ones") << quint64(0xffffffff);
        QTest::newRow("high bit") << (quint64(1) << 63);
        QTest::newRow("event kind") << (quint64(0x45) << 56) + 1;
        QTest::newRow("never given") << (quint64(0x46) << 56) + 1000000000;
    }
    void wrongHandlesAreRefused()
    {
        QFETCH(quint64, handle);
        const int before = openDescriptors();
        char line[16] = "kept";
        uint32_t written = 7;
        QVERIFY(rkOSfgets(line, sizeof line, handle) == nullptr);
        QCOMPARE(line, "kept");
        QVERIFY(rkOSfputs("x", handle) < 0);
        QCOMPARE(rkOSWriteFile(handle, "x", 1, &written, nullptr), 0);
        QCOMPARE(written, 0U);
        QCOMPARE(rkOSCloseFile(handle), 0);
        QCOMPARE(openDescriptors(), before);
    }

    void aClosedHandleNeverReachesTheNextFile()
    {
        const uint64_t first = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        QVERIFY(rkOSCloseFile(first) != 0);
        const uint64_t second = openFile(m_home->path("documents/other"), writeAccess, RKOS_CREATE_ALWAYS);
        QVERIFY(first != second);
        QVERIFY(rkOSfputs("stray", first) < 0);
        QCOMPARE(rkOSCloseFile(first), 0);
        QVERIFY(rkOSfputs("meant", second) > 0);
        QVERIFY(rkOSCloseFile(second) != 0);
        QCOMPARE(contentOf(m_home->path("documents/other")), QByteArray("meant"));
    }

    void anEventIsNoFile()
    {
        const uint64_t event = rkOSCreateEvent("files");
        QVERIFY(event != RKOS_INVALID_HANDLE);
        QVERIFY(rkOSfputs("x", event) < 0);
        QCOMPARE(rkOSCloseFile(event), 0);
        QCOMPARE(rkOSSetEvent(event), 1);
        QCOMPARE(rkOSWaitEvent(event, 0), 0);
        QCOMPARE(rkOSCloseEvent(event), 1);
        const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        QCOMPARE(rkOSCloseEvent(handle), 0);
        QCOMPARE(rkOSWaitEvent(handle, 0), RKOS_WAIT_FAILED);
        QVERIFY(rkOSCloseFile(handle) != 0);
    }

    // ---- lines

    void lineEnds_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QList<QByteArray>>("expected");
        const auto row = [](const char *name, const QByteArray &content, const QList<QByteArray> &expected) {
            QTest::newRow(name) << content << expected;
        };
        row("empty file", "", {});
        row("LF", "a\nb\n", {"a", "b"});
        row("CR LF", "a\r\nb\r\n", {"a", "b"});
        row("no end", "a\nb", {"a", "b"});
        row("empty lines", "\n\r\n\na\n", {"", "", "", "a"});
        row("only LF", "\n", {""});
        row("only CR", "\r", {"\r"});
        row("CR inside", "a\rb\n", {"a\rb"});
        row("CR CR LF", "a\r\r\n", {"a\r"});
        row("CR at the end of the file", "a\r", {"a\r"});
        row("LF CR", "a\n\rb", {"a", "\rb"});
        row("zero byte", QByteArray("a\0b\nc\n", 6), {"a", "c"});
        row("zero byte first", QByteArray("\0b\nc\n", 5), {"", "c"});
        row("high bytes", "\xff\xfe\n\x80\n", {"\xff\xfe", "\x80"});
    }
    void lineEnds()
    {
        QFETCH(QByteArray, content);
        QFETCH(QList<QByteArray>, expected);
        QCOMPARE(lines(content, 4096), expected);
    }

    void zeroBytesAreKeptInTheBuffer()
    {
        QVERIFY(putContent(file(), QByteArray("a\0b\n", 4)));
        const uint64_t handle = openFile(file(), readAccess, RKOS_OPEN_EXISTING);
        char line[8] = "xxxxxxx";
        QVERIFY(rkOSfgets(line, sizeof line, handle) != nullptr);
        QCOMPARE(QByteArray(line, 8), QByteArray("a\0b\0xxx\0", 8));
        rkOSCloseFile(handle);
    }

    void longLinesContinue_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QList<QByteArray>>("expected"); // read with a buffer of 5: pieces of 4
        const auto row = [](const char *name, const QByteArray &content, const QList<QByteArray> &expected) {
            QTest::newRow(name) << content << expected;
        };
        row("one less", "abc\nx", {"abc", "x"});
        row("exactly", "abcd\nx", {"abcd", "x"});
        row("exactly, CR LF", "abcd\r\nx", {"abcd", "x"});
        row("CR is the last that fits", "abc\r\nx", {"abc", "x"});
        row("exactly, no end", "abcd", {"abcd"});
        row("one more", "abcde\nx", {"abcd", "e", "x"});
        row("one more, CR LF", "abcde\r\nx", {"abcd", "e", "x"});
        row("twice", "abcdefgh\r\nx", {"abcd", "efgh", "x"});
        row("CR stays when no LF follows", "abc\rd\n", {"abc\r", "d"});
        row("CR behind the cut without LF", "abcd\re\n", {"abcd", "\re"});
        row("two CR across the cut", "abc\r\r\nx", {"abc\r", "x"});
        row("cut, then an empty line", "abcd\n\nx", {"abcd", "", "x"});
        row("CR at the cut and the end of the file", "abc\r", {"abc\r"});
        row("CR behind the cut and the end of the file", "abcd\r", {"abcd", "\r"});
    }
    void longLinesContinue()
    {
        QFETCH(QByteArray, content);
        QFETCH(QList<QByteArray>, expected);
        QCOMPARE(lines(content, 5), expected);
    }

    // The same over every place where the read-ahead may end.
    void lineEndsAcrossTheReadAhead_data()
    {
        QTest::addColumn<int>("length");
        for (int length = 65530; length <= 65540; ++length)
            QTest::addRow("%d", length) << length;
    }
    void lineEndsAcrossTheReadAhead()
    {
        QFETCH(int, length);
        const QByteArray text(length, 'x');
        const QList<QByteArray> found = lines(text + "\r\nnext\r\n", length + 1);
        QCOMPARE(found.size(), 2);
        QVERIFY(found[0] == text);
        QCOMPARE(found[1], QByteArray("next"));
        const QList<QByteArray> wide = lines(text + "\r\nnext\r\n", length + 100);
        QVERIFY(wide.size() == 2 && wide[0] == text && wide[1] == "next");
    }

    void uselessBuffersAreRefused()
    {
        QVERIFY(putContent(file(), "abc\n"));
        const uint64_t handle = openFile(file(), readAccess, RKOS_OPEN_EXISTING);
        char line[4] = "old";
        QVERIFY(rkOSfgets(nullptr, 4, handle) == nullptr);
        for (const int size : {1, 0, -1, INT_MIN})
            QVERIFY(rkOSfgets(line, size, handle) == nullptr);
        QCOMPARE(line, "old");
        QCOMPARE(rkOSfgets(line, 2, handle), "a");
        rkOSCloseFile(handle);
    }

    void aGrowingFileGoesOn()
    {
        QVERIFY(putContent(file(), "a\n"));
        const uint64_t handle = openFile(file(), readAccess, RKOS_OPEN_EXISTING);
        char line[16];
        QCOMPARE(rkOSfgets(line, sizeof line, handle), "a");
        QVERIFY(rkOSfgets(line, sizeof line, handle) == nullptr);
        QFile more(QFile::decodeName(file()));
        QVERIFY(more.open(QIODevice::Append) && more.write("b\n") == 2);
        more.close();
        QCOMPARE(rkOSfgets(line, sizeof line, handle), "b");
        rkOSCloseFile(handle);
    }

    void linesDoNotCostACallPerByte()
    {
        QByteArray content;
        for (int i = 0; i < 20000; ++i)
            content += "TransmitAudIp" + QByteArray::number(i) + "=239.0.0.1\n";
        const auto readCalls = [] {
            const QByteArray io = contentOf("/proc/self/io");
            return io.mid(io.indexOf("syscr: ") + 7).split('\n').first().toLongLong();
        };
        const qlonglong before = readCalls();
        QCOMPARE(lines(content, 4096).size(), 20000);
        QVERIFY(readCalls() - before < 100);
    }

    // ---- writing

    void writesAreThereAtOnce()
    {
        const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        QCOMPARE(rkOSfputs("a%sb\n", handle), 1);
        QCOMPARE(rkOSfputs("", handle), 1);
        uint32_t written = 0;
        QCOMPARE(rkOSWriteFile(handle, "c\0d", 3, &written, nullptr), 1);
        QCOMPARE(written, 3U);
        QCOMPARE(rkOSWriteFile(handle, "e", 1, nullptr, nullptr), 1);
        QCOMPARE(rkOSWriteFile(handle, nullptr, 0, &written, nullptr), 1);
        QCOMPARE(contentOf(file()), QByteArray("a%sb\nc\0de", 9));
        QCOMPARE(rkOSWriteFile(handle, nullptr, 1, &written, nullptr), 0);
        QCOMPARE(rkOSfputs(nullptr, handle), -1);
        QCOMPARE(rkOSCloseFile(handle), 1);
    }

    void readingAndWritingShareOnePosition()
    {
        QVERIFY(putContent(file(), "one\ntwo\nsix\n"));
        const uint64_t handle = openFile(file(), bothAccess, RKOS_OPEN_EXISTING);
        char line[16];
        QCOMPARE(rkOSfgets(line, sizeof line, handle), "one");
        QVERIFY(rkOSfputs("TWO\n", handle) > 0);
        QCOMPARE(rkOSfgets(line, sizeof line, handle), "six");
        QVERIFY(rkOSfgets(line, sizeof line, handle) == nullptr);
        QVERIFY(rkOSfputs("end\n", handle) > 0);
        rkOSCloseFile(handle);
        QCOMPARE(contentOf(file()), QByteArray("one\nTWO\nsix\nend\n"));
    }

    void manyThreadsOneHandle()
    {
        const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
        std::vector<std::thread> threads;
        std::atomic<int> bad{0};
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                const QByteArray line = QByteArray(50, static_cast<char>('a' + t)) + '\n';
                for (int i = 0; i < 500; ++i)
                    bad += rkOSfputs(line.constData(), handle) > 0 ? 0 : 1;
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(bad.load(), 0);
        QCOMPARE(rkOSCloseFile(handle), 1);
        const uint64_t again = openFile(file(), readAccess, RKOS_OPEN_EXISTING);
        std::atomic<int> lines{0};
        threads.clear();
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                char line[80];
                while (rkOSfgets(line, sizeof line, again) != nullptr) {
                    ++lines;
                    bad += QByteArray(line) == QByteArray(50, line[0]) ? 0 : 1;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        rkOSCloseFile(again);
        QCOMPARE(lines.load(), 2000);
        QCOMPARE(bad.load(), 0);
    }

    // A file size limit stands for a full disk; the signal that comes with it must not end us.
    void aWriteThatDoesNotFitIsToldOnce()
    {
        const int result = inSecondProcess([this] {
            const rlimit limit = {1000, 1000};
            const uint64_t handle = openFile(file(), writeAccess, RKOS_CREATE_ALWAYS);
            setrlimit(RLIMIT_FSIZE, &limit);
            const QByteArray block(600, 'x');
            uint32_t written = 0;
            if (rkOSfputs(block.constData(), handle) != 1)
                return 1;
            if (rkOSWriteFile(handle, block.constData(), 600, &written, nullptr) != 0 || written != 400)
                return 2;
            if (rkOSfputs("more", handle) != -1)
                return 3;
            if (rkOSCloseFile(handle) != 0)
                return 4;
            return 0;
        });
        QCOMPARE(result, 0);
        QCOMPARE(log().count("documents/file is incomplete: File too large"), 1);
        QCOMPARE(log().count('\n'), 1);
    }

    // ---- the library's own directories

    void ownFilesAreClosedToOthers()
    {
        char temp[256];
        QVERIFY(rkOSGetTempPath(temp, sizeof temp) != 0);
        const QByteArray path = QByteArray(temp).append("ipcfg_nmos_temp.sdp");
        const mode_t before = umask(0);
        rkOSCloseFile(openFile(path, bothAccess, RKOS_CREATE_ALWAYS));
        umask(before);
        QCOMPARE(modeOf(path), 0600);
        QVERIFY(chmod(path.constData(), 0666) == 0);
        QVERIFY(rkOSCloseFile(openFile(path, bothAccess, RKOS_TRUNCATE_EXISTING)) != 0);
        QCOMPARE(modeOf(path), 0600);
    }

    void plantedThingsAreRefused_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind :
             {"link", "link by another way", "dangling link", "second name", "pipe", "directory"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
        if (geteuid() == 0)
            QTest::newRow("another owner") << QStringLiteral("another owner");
    }
    void plantedThingsAreRefused()
    {
        QFETCH(QString, kind);
        char temp[256];
        QVERIFY(rkOSGetTempPath(temp, sizeof temp) != 0);
        QByteArray path = QByteArray(temp).append("ipcfg_nmos_temp.sdp");
        const QByteArray foreign = m_home->path("documents/foreign");
        QVERIFY(putContent(foreign, "foreign"));
        if (kind.startsWith(QLatin1String("link")))
            QVERIFY(symlink(foreign.constData(), path.constData()) == 0);
        else if (kind == QLatin1String("dangling link"))
            QVERIFY(symlink(m_home->path("documents/none").constData(), path.constData()) == 0);
        else if (kind == QLatin1String("second name"))
            QVERIFY(::link(foreign.constData(), path.constData()) == 0);
        else if (kind == QLatin1String("pipe"))
            QVERIFY(mkfifo(path.constData(), 0600) == 0);
        else if (kind == QLatin1String("directory"))
            QVERIFY(mkdir(path.constData(), 0700) == 0);
        else
            QVERIFY(putContent(path, "foreign") && chown(path.constData(), 12345, 12345) == 0);
        if (kind == QLatin1String("link by another way")) {
            QVERIFY(symlink(temp, m_home->path("way").constData()) == 0);
            path = m_home->path("way/ipcfg_nmos_temp.sdp");
        }
        for (uint32_t disposition = 1; disposition <= 5; ++disposition)
            QCOMPARE(openFile(path, bothAccess, disposition), RKOS_INVALID_HANDLE);
        QCOMPARE(contentOf(foreign), QByteArray("foreign"));
        QCOMPARE(rkOSFileExists(m_home->path("documents/none").constData()), 0);
        if (kind == QLatin1String("another owner"))
            QCOMPARE(contentOf(path), QByteArray("foreign"));
    }

    // ---- existence

    void existence()
    {
        QCOMPARE(rkOSFileExists(file().constData()), 0);
        QVERIFY(putContent(file(), ""));
        QCOMPARE(rkOSFileExists(file().constData()), 1);
        QCOMPARE(rkOSFileExists((file() + "/x").constData()), 0);
        QCOMPARE(rkOSFileExists(m_home->path("documents").constData()), 1);
        QCOMPARE(rkOSFileExists(m_home->path("documents/").constData()), 1);
        QVERIFY(symlink("/nonexistent", m_home->path("dangling").constData()) == 0);
        QCOMPARE(rkOSFileExists(m_home->path("dangling").constData()), 0);
        QCOMPARE(rkOSFileExists("/dev/null"), 1);
        QCOMPARE(rkOSFileExists(""), 0);
        QCOMPARE(rkOSFileExists(nullptr), 0);
    }
};

QTEST_GUILESS_MAIN(TestRkosFiles)
#include "test_rkos_files.moc"
