// SPDX-License-Identifier: MIT
// Lines out of a descriptor: whatever the pieces in which it gives its bytes and the size of the caller's
// buffer, they are the lines of the text.
#include "linebuffer.h"

#include <QTemporaryFile>
#include <QtTest>

#include <fcntl.h>
#include <random>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace rkos;

namespace {

// What the pieces are by the plain rule: up to size-1 bytes, and the line end that follows goes with them.
QByteArrayList expectedPieces(QByteArray text, int size)
{
    QByteArrayList pieces;
    while (!text.isEmpty()) {
        const int end = text.indexOf('\n');
        const bool fits = end >= 0 && end <= size - 1;
        QByteArray piece = text.left(fits ? end : qMin(size - 1, text.size()));
        text.remove(0, fits ? end + 1 : piece.size());
        if (fits && piece.endsWith('\r'))
            piece.chop(1);
        else if (!fits && text.startsWith("\r\n"))
            text.remove(0, 2);
        pieces << piece;
    }
    return pieces;
}

QByteArrayList readPieces(LineBuffer &lines, int fd, int size)
{
    QByteArrayList pieces;
    QByteArray buffer(size, '?');
    while (lines.readLine(fd, buffer.data(), size_t(size)))
        pieces << QByteArray(buffer.constData());
    return pieces;
}

// A file with this text, read from its begin.
class TextFile {
public:
    explicit TextFile(const QByteArray &text)
    {
        if (!m_file.open() || m_file.write(text) != text.size() || !m_file.seek(0))
            qFatal("no temporary file");
        m_file.flush();
        lseek(fd(), 0, SEEK_SET);
    }
    int fd() const { return m_file.handle(); }
    qint64 position() const { return lseek(fd(), 0, SEEK_CUR); }

private:
    QTemporaryFile m_file;
};

QByteArray randomText(std::mt19937 &random)
{
    static const QByteArray kLetters("ab\r\n\r\n\n");
    QByteArray text;
    for (int left = int(random() % 40); left > 0; --left)
        text += kLetters[int(random() % unsigned(kLetters.size()))];
    return text;
}

} // namespace

class TestRkosLineBuffer : public QObject {
    Q_OBJECT
private slots:
    void pieces_data();
    void pieces();
    void anyTextInAnyBuffer();
    void bytesThatComeOneByOne();
    void longerThanWhatIsReadAhead();
    void aZeroByteIsKept();
    void theEndOfTheFileIsNoError();
    void aReadErrorIsTold();
    void thePositionGoesBackToWhatWasNotHandedOut();
    void whatIsWrittenAfterwardsIsRead();
    void aPipeCannotGoBack();
};

void TestRkosLineBuffer::pieces_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArrayList>("expected");
    const auto row = [](const char *name, const QByteArray &text, int size, const QByteArrayList &expected) {
        QTest::newRow(name) << text << size << expected;
    };
    row("empty file", "", 10, {});
    row("one line", "one\n", 10, {"one"});
    row("no end", "one", 10, {"one"});
    row("empty lines", "\n\n", 10, {"", ""});
    row("CR LF", "one\r\ntwo\r\n", 10, {"one", "two"});
    row("CR alone is text", "one\rtwo\n", 10, {"one\rtwo"});
    row("CR at the end of the file is text", "one\r", 10, {"one\r"});
    row("only the last CR goes", "one\r\r\n", 10, {"one\r"});
    row("just fits", "123456789\nx\n", 10, {"123456789", "x"});
    row("just fits, CR LF", "123456789\r\nx\n", 10, {"123456789", "x"});
    row("one too long", "1234567890\nx\n", 10, {"123456789", "0", "x"});
    row("cut twice", "123456789123456789\n", 10, {"123456789", "123456789"});
    row("CR before the cut is text", "12345678\r9\n", 10, {"12345678\r", "9"});
    row("CR before the cut, LF behind it", "12345678\r\nx\n", 10, {"12345678", "x"});
    row("smallest buffer", "ab\n\nc", 2, {"a", "b", "", "c"});
}

void TestRkosLineBuffer::pieces()
{
    QFETCH(QByteArray, text);
    QFETCH(int, size);
    const TextFile file(text);
    LineBuffer lines;
    QTEST(readPieces(lines, file.fd(), size), "expected");
    QCOMPARE(lines.error(), 0);
}

void TestRkosLineBuffer::anyTextInAnyBuffer()
{
    std::mt19937 random(2110);
    for (int i = 0; i < 2000; ++i) {
        const QByteArray text = randomText(random);
        const int size = 2 + int(random() % 12);
        const TextFile file(text);
        LineBuffer lines;
        const QByteArrayList found = readPieces(lines, file.fd(), size);
        QVERIFY2(found == expectedPieces(text, size),
                 (text.toPercentEncoding() + " in " + QByteArray::number(size)).constData());
    }
}

void TestRkosLineBuffer::bytesThatComeOneByOne()
{
    int ends[2];
    QCOMPARE(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const QByteArray text("first\r\nsecond\n\nthe last");
    std::thread writer([&] {
        for (const char byte : text)
            if (send(ends[0], &byte, 1, 0) != 1)
                break;
        close(ends[0]);
    });
    LineBuffer lines;
    const QByteArrayList found = readPieces(lines, ends[1], 6);
    writer.join();
    close(ends[1]);
    QCOMPARE(found, (QByteArrayList{"first", "secon", "d", "", "the l", "ast"}));
}

void TestRkosLineBuffer::longerThanWhatIsReadAhead()
{
    const QByteArray longLine(200000, 'x');
    const TextFile file(longLine + "\r\nnext\n");
    LineBuffer lines;
    QCOMPARE(readPieces(lines, file.fd(), 300000), (QByteArrayList{longLine, "next"}));
    // With a line end across the border of two reads as well.
    for (const int length : {65534, 65535, 65536, 65537}) {
        const TextFile border(QByteArray(length, 'y') + "\r\nz\n");
        LineBuffer fresh;
        const QByteArrayList found = readPieces(fresh, border.fd(), 100000);
        QCOMPARE(found.size(), 2);
        QCOMPARE(found[0].size(), length);
        QCOMPARE(found[1], QByteArray("z"));
    }
}

void TestRkosLineBuffer::aZeroByteIsKept()
{
    const TextFile file(QByteArray("a\0b\nc\n", 6));
    LineBuffer lines;
    char buffer[10];
    QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
    QCOMPARE(QByteArray(buffer, 4), QByteArray("a\0b\0", 4));
    QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
    QCOMPARE(buffer, "c");
}

void TestRkosLineBuffer::theEndOfTheFileIsNoError()
{
    const TextFile file("one\n");
    LineBuffer lines;
    char buffer[10] = "untouched";
    QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
    for (int i = 0; i < 3; ++i)
        QVERIFY(!lines.readLine(file.fd(), buffer, sizeof buffer));
    QCOMPARE(lines.error(), 0);
    QCOMPARE(buffer, "one");
}

void TestRkosLineBuffer::aReadErrorIsTold()
{
    const int folder = open("/", O_RDONLY | O_DIRECTORY);
    LineBuffer lines;
    char buffer[10] = "untouched";
    QVERIFY(!lines.readLine(folder, buffer, sizeof buffer));
    QCOMPARE(lines.error(), EISDIR);
    close(folder);
    LineBuffer another;
    QVERIFY(!another.readLine(-1, buffer, sizeof buffer));
    QCOMPARE(another.error(), EBADF);
    QCOMPARE(buffer, "untouched");
}

void TestRkosLineBuffer::thePositionGoesBackToWhatWasNotHandedOut()
{
    const TextFile file("one\ntwo\r\nthree\n");
    LineBuffer lines;
    char buffer[20];
    QVERIFY(lines.dropReadAhead(file.fd())); // nothing was read ahead
    QCOMPARE(file.position(), qint64(0));
    for (const qint64 position : {4, 9, 15}) {
        QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
        QVERIFY(lines.dropReadAhead(file.fd()));
        QCOMPARE(file.position(), position);
    }
    // A line that was cut goes on where it was cut.
    const TextFile cut("123456789\n");
    QVERIFY(lines.readLine(cut.fd(), buffer, 5));
    QVERIFY(lines.dropReadAhead(cut.fd()));
    QCOMPARE(cut.position(), qint64(4));
    QVERIFY(lines.readLine(cut.fd(), buffer, sizeof buffer));
    QCOMPARE(buffer, "56789");
}

void TestRkosLineBuffer::whatIsWrittenAfterwardsIsRead()
{
    const TextFile file("one\nTWO\nthree\n");
    LineBuffer lines;
    char buffer[20];
    QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
    QVERIFY(lines.dropReadAhead(file.fd()));
    QCOMPARE(write(file.fd(), "two", 3), ssize_t(3));
    QVERIFY(lines.readLine(file.fd(), buffer, sizeof buffer));
    QCOMPARE(buffer, "");
    lseek(file.fd(), 0, SEEK_SET);
    LineBuffer fresh;
    QCOMPARE(readPieces(fresh, file.fd(), 20), (QByteArrayList{"one", "two", "three"}));
}

void TestRkosLineBuffer::aPipeCannotGoBack()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    QCOMPARE(write(ends[1], "one\ntwo\n", 8), ssize_t(8));
    LineBuffer lines;
    char buffer[20];
    QVERIFY(lines.readLine(ends[0], buffer, sizeof buffer));
    QVERIFY(!lines.dropReadAhead(ends[0]));
    close(ends[0]);
    close(ends[1]);
}

QTEST_GUILESS_MAIN(TestRkosLineBuffer)
#include "test_rkos_linebuffer.moc"
