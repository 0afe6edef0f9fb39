// SPDX-License-Identifier: MIT
//
// A folder of the process's own: made, held, cleared up after others, and never somebody else's file.
#include "files/ownfolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

class TestOwnFolder : public QObject {
    Q_OBJECT

private slots:
    void init() { m_parent = std::make_unique<QTemporaryDir>(); }
    void cleanup() { m_parent.reset(); }
    void nobodyElseMayLookIn();
    void staysTheSame();
    void goesWithTheObject();
    void twoAtOnce();
    void leftBehindIsCleared();
    void clearedUpByOthers();
    void anotherParent();
    void aParentThatIsNotThere();
    void foreignFiles_data();
    void foreignFiles();
    void aLinkIsNoFolder();
    void foreignNamesStay();

private:
    QByteArray parent() const { return QFile::encodeName(m_parent->path() + QLatin1Char('/')); }
    QStringList folders() const
    {
        return QDir(m_parent->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }
    static QByteArray name() { return "own-" + QByteArray::number(static_cast<qint64>(getpid())); }

    std::unique_ptr<QTemporaryDir> m_parent;
};

void TestOwnFolder::nobodyElseMayLookIn()
{
    OwnFolder own("own-", "x.sdp");
    QCOMPARE(own.file(parent()), parent() + name() + "/x.sdp");
    struct stat state = {};
    QCOMPARE(stat((parent() + name()).constData(), &state), 0);
    QCOMPARE(state.st_mode & 07777, mode_t(0700));
    QVERIFY(!QFile::exists(QFile::decodeName(parent() + name() + "/x.sdp"))); // the caller makes it
}

void TestOwnFolder::staysTheSame()
{
    OwnFolder own("own-", "x.sdp");
    const QByteArray first = own.file(parent());
    QFile file(QFile::decodeName(first));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(own.file(parent()), first);
    QVERIFY(file.exists());
    QCOMPARE(folders().size(), 1);
}

void TestOwnFolder::goesWithTheObject()
{
    {
        OwnFolder own("own-", "x.sdp");
        QFile file(QFile::decodeName(own.file(parent())));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(folders().isEmpty());
}

// As in two containers that count their processes alike and share the folder.
void TestOwnFolder::twoAtOnce()
{
    OwnFolder first("own-", "x.sdp"), second("own-", "x.sdp");
    const QByteArray one = first.file(parent()), other = second.file(parent());
    QVERIFY(!one.isEmpty() && !other.isEmpty());
    QVERIFY(one != other);
    QCOMPARE(folders().size(), 2);
    QCOMPARE(first.file(parent()), one);
}

void TestOwnFolder::leftBehindIsCleared()
{
    const pid_t process = fork();
    if (process == 0) {
        OwnFolder own("own-", "x.sdp");
        QFile file(QFile::decodeName(own.file(parent())));
        _exit(file.open(QIODevice::WriteOnly) ? 0 : 1); // without any good-bye
    }
    int status = 1;
    QCOMPARE(waitpid(process, &status, 0), process);
    QCOMPARE(status, 0);
    QCOMPARE(folders().size(), 1);
    OwnFolder living("own-", "x.sdp");
    QVERIFY(!living.file(parent()).isEmpty());
    QCOMPARE(folders(), QStringList{QFile::decodeName(name())});
}

void TestOwnFolder::clearedUpByOthers()
{
    OwnFolder own("own-", "x.sdp");
    const QByteArray path = own.file(parent());
    QCOMPARE(rmdir((parent() + name()).constData()), 0);
    QCOMPARE(own.file(parent()), path);
    QVERIFY(QFile::exists(QFile::decodeName(parent() + name())));
}

void TestOwnFolder::anotherParent()
{
    QTemporaryDir elsewhere;
    const QByteArray there = QFile::encodeName(elsewhere.path() + QLatin1Char('/'));
    OwnFolder own("own-", "x.sdp");
    QVERIFY(!own.file(parent()).isEmpty());
    QCOMPARE(own.file(there), there + name() + "/x.sdp");
    QVERIFY(folders().isEmpty());
}

void TestOwnFolder::aParentThatIsNotThere()
{
    OwnFolder own("own-", "x.sdp");
    QVERIFY(own.file(parent() + "missing/").isEmpty());
    QVERIFY(!own.file(parent()).isEmpty());
}

void TestOwnFolder::foreignFiles_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"link", "pipe", "folder", "second name"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void TestOwnFolder::foreignFiles()
{
    QFETCH(const QString, kind);
    OwnFolder own("own-", "x.sdp");
    const QByteArray path = own.file(parent());
    QFile other(m_parent->filePath(QStringLiteral("other")));
    QVERIFY(other.open(QIODevice::WriteOnly));
    const QByteArray otherName = QFile::encodeName(other.fileName());
    if (kind == QLatin1String("link"))
        QCOMPARE(symlink(otherName.constData(), path.constData()), 0);
    else if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(path.constData(), 0600), 0);
    else if (kind == QLatin1String("folder"))
        QCOMPARE(mkdir(path.constData(), 0700), 0);
    else
        QCOMPARE(link(otherName.constData(), path.constData()), 0);
    QVERIFY(own.file(parent()).isEmpty());
}

// Where our folder's name is taken by something else, there are more names.
void TestOwnFolder::aLinkIsNoFolder()
{
    QTemporaryDir elsewhere;
    QCOMPARE(symlink(QFile::encodeName(elsewhere.path()).constData(), (parent() + name()).constData()), 0);
    OwnFolder own("own-", "x.sdp");
    QCOMPARE(own.file(parent()), parent() + name() + "-1/x.sdp");
    QVERIFY(QDir(elsewhere.path()).isEmpty());
}

void TestOwnFolder::foreignNamesStay()
{
    QVERIFY(QDir(m_parent->path()).mkdir(QStringLiteral("other-1")));
    QFile file(m_parent->filePath(QStringLiteral("own-file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    OwnFolder own("own-", "x.sdp");
    QVERIFY(!own.file(parent()).isEmpty());
    QCOMPARE(folders().size(), 3);
}

QTEST_GUILESS_MAIN(TestOwnFolder)
#include "test_ownfolder.moc"
