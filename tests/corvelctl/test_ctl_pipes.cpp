// SPDX-License-Identifier: MIT
// Pipes in the place of files: what a shell gives for <(command) and >(command), FIFOs and standard input,
// for every command that reads or writes one. A pipe can be read once only.
#include "ctlhome.h"

#include <sys/stat.h>

class TestCtlPipes : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aPipeIsReadLikeAFile_data();
    void aPipeIsReadLikeAFile();
    void aFifoIsReadLikeAFile_data();
    void aFifoIsReadLikeAFile();
    void aFifoThatNobodyWritesToIsRefused_data();
    void aFifoThatNobodyWritesToIsRefused();
    void twoPipesAreCompared();
    void onePipeOfADumpOfSeveral();
    void aPipeIsWrittenTo();
    void whatReadsAndWhatWritesMeet();
    void standardInputHasAName();
    void halfADumpInAPipeChangesNothing();
    void standardInputIsReadOnce_data();
    void standardInputIsReadOnce();

private:
    CtlResult shell(const QString &script) const;
    void compareWithAFile(const QByteArray &command, const QString &file, const QString &script);

    CtlHome m_home;
};

namespace {

struct Reader {
    const char *command; // %1 stands for the file
    const char *file;
};

const Reader kReaders[] = {
    {"diff %1 store", "a.json"},
    {"diff store %1", "a.json"},
    {"diff 0 %1", "a.ipp"},
    {"restore -y -n %1", "a.json"},
    {"restore -y -n --all %1", "a.json"},
    {"ipp import -n %1", "a.ipp"},
    {"ipp check %1", "a.ipp"},
    {"table import %1", "a.csv"},
    {"sdp check %1", "a.sdp"},
    {"sdp load -n %1 1", "a.sdp"},
    {"sdp fix --ptp traceable -o - %1", "a.sdp"},
};

} // namespace

// The store is one value away from all of the files.
void TestCtlPipes::initTestCase()
{
    QCOMPARE(m_home.run("set server channels=2").code, 0);
    QCOMPARE(m_home.run("set 0/video rx.dst=239.1.1.1:20000 rx.use=dst,port").code, 0);
    QCOMPARE(m_home.run("dump a.json").code, 0);
    QCOMPARE(m_home.run("ipp export a.ipp").code, 0);
    QCOMPARE(m_home.run("table export a.csv").code, 0);
    m_home.write("a.sdp", m_home.run("sdp write 0/video --side rx").out);
    QCOMPARE(m_home.run("set 0/video rx.dst=239.1.1.9").code, 0);
}

CtlResult TestCtlPipes::shell(const QString &script) const
{
    const QString path = QStringLiteral("PATH=" CORVEL_BIN_DIR ":$PATH; export LC_ALL=C; ");
    return m_home.runProgram(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), path + script});
}

// The name of the file stands in some messages; all else has to be the same.
void TestCtlPipes::compareWithAFile(const QByteArray &command, const QString &file, const QString &script)
{
    const CtlResult direct = shell(QLatin1String("corvelctl ") + QString::fromUtf8(command).arg(file));
    const CtlResult piped = shell(script);
    QVERIFY2(direct.code <= 1, direct.err.constData());
    QVERIFY(!direct.out.isEmpty() || command.startsWith("ipp check"));
    QCOMPARE(piped.code, direct.code);
    const auto nameless = [](QByteArray text, const QByteArray &name) { return text.replace(name, "FILE"); };
    const QByteArray name = piped.out.mid(piped.out.indexOf("/dev/fd/"), 10);
    QCOMPARE(nameless(piped.out, name.startsWith("/dev/fd/") ? name : "fifo"),
             nameless(direct.out, file.toUtf8()));
}

void TestCtlPipes::aPipeIsReadLikeAFile_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QString>("file");
    for (const Reader &row : kReaders)
        QTest::newRow(row.command) << QByteArray(row.command) << QString::fromLatin1(row.file);
}

void TestCtlPipes::aPipeIsReadLikeAFile()
{
    QFETCH(QByteArray, command);
    QFETCH(QString, file);
    const QString pipe = QStringLiteral("<(cat %1)").arg(file);
    compareWithAFile(command, file, QLatin1String("corvelctl ") + QString::fromUtf8(command).arg(pipe));
}

void TestCtlPipes::aFifoIsReadLikeAFile_data()
{
    aPipeIsReadLikeAFile_data();
}

// Whoever comes first waits for the other.
void TestCtlPipes::aFifoIsReadLikeAFile()
{
    QFETCH(QByteArray, command);
    QFETCH(QString, file);
    compareWithAFile(command, file,
                     QStringLiteral("rm -f fifo; mkfifo fifo; cat %1 > fifo & corvelctl ").arg(file) +
                         QString::fromUtf8(command).arg(QStringLiteral("fifo")));
}

void TestCtlPipes::aFifoThatNobodyWritesToIsRefused_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"diff store %1", "sdp check %1"})
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlPipes::aFifoThatNobodyWritesToIsRefused()
{
    QFETCH(QByteArray, command);
    const CtlResult result = shell(QStringLiteral("rm -f lonely; mkfifo lonely; corvelctl ") +
                                   QString::fromUtf8(command).arg(QStringLiteral("lonely")));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray("corvelctl: cannot read lonely: nobody writes to it\n"));
}

void TestCtlPipes::twoPipesAreCompared()
{
    const CtlResult result = shell(QStringLiteral("corvelctl diff <(cat a.json) <(corvelctl dump)"));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(result.out, QByteArray("0/video rx.dst: 239.1.1.1 -> 239.1.1.9\n"));
    QCOMPARE(shell(QStringLiteral("corvelctl diff <(corvelctl dump) <(corvelctl dump)")).code, 0);
}

void TestCtlPipes::onePipeOfADumpOfSeveral()
{
    QCOMPARE(m_home.run("config copy default night").code, 0);
    const CtlResult several = shell(QStringLiteral("corvelctl restore -y -n <(corvelctl dump --all)"));
    QCOMPARE(several.code, 2);
    QVERIFY2(
        several.err.contains(" holds the configurations default, night; choose one with --from, or --all\n"),
        several.err.constData());
    QCOMPARE(shell(QStringLiteral("corvelctl restore -y -n --from night <(corvelctl dump --all)")).code, 0);
    QCOMPARE(m_home.run("config delete night -y").code, 0);
}

void TestCtlPipes::aPipeIsWrittenTo()
{
    const CtlResult result = shell(
        QStringLiteral("corvelctl dump >(cat > out.json) && wait $! && cmp out.json <(corvelctl dump)"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
}

// One writes while the other reads, and nobody holds all of it.
void TestCtlPipes::whatReadsAndWhatWritesMeet()
{
    QCOMPARE(shell(QStringLiteral("corvelctl dump | corvelctl restore -y -n -")).code, 0);
    QCOMPARE(shell(QStringLiteral("corvelctl table export - | corvelctl table import -")).code, 0);
    QCOMPARE(shell(QStringLiteral("corvelctl dump | corvelctl diff store -")).code, 0);
    QCOMPARE(shell(QStringLiteral("corvelctl ipp export -q - | corvelctl ipp import -n -")).code, 0);
    QCOMPARE(shell(QStringLiteral("corvelctl sdp write 0/video --side rx | corvelctl sdp load -n - 0")).code,
             0);
}

void TestCtlPipes::standardInputHasAName()
{
    for (const char *from : {"cat a.json |", ""}) {
        const QString script = QString::fromLatin1(from) +
                               QLatin1String(" corvelctl diff /dev/stdin store ") +
                               QLatin1String(*from ? "" : "< a.json");
        const CtlResult result = shell(script);
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out, QByteArray("0/video rx.dst: 239.1.1.1 -> 239.1.1.9\n"));
    }
}

void TestCtlPipes::halfADumpInAPipeChangesNothing()
{
    const QByteArray before = m_home.rows();
    const CtlResult result = shell(QStringLiteral("corvelctl restore -y <(head -c 200 a.json)"));
    QCOMPARE(result.code, 2);
    QVERIFY2(result.err.endsWith(": no JSON: cut short, or damaged\n"), result.err.constData());
    QCOMPARE(m_home.rows(), before);
}

void TestCtlPipes::standardInputIsReadOnce_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"diff - -", "sdp check - -", "sdp check - a.sdp -"})
        QTest::newRow(command) << QByteArray(command);
}

// The second one would be empty, and judged as if somebody had meant that.
void TestCtlPipes::standardInputIsReadOnce()
{
    QFETCH(QByteArray, command);
    const CtlResult result = m_home.run(command.constData(), {}, m_home.read("a.json"));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err.left(result.err.indexOf('\n')),
             QByteArray("corvelctl: standard input can be read once only; - stands for one of the files"));
}

QTEST_GUILESS_MAIN(TestCtlPipes)
#include "test_ctl_pipes.moc"
