// SPDX-License-Identifier: MIT
//
// A store with one thing wrong in its files, thousands of times. Whatever it is, the next program has the
// data or, with the damaged file set aside and one line in the log, those of the good copy, and can go on
// storing.
#include "campaign.h"
#include "mutations.h"
#include "platform/rkcfg/changes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <sys/time.h>

namespace {

constexpr int all = 100;  // values in the database
constexpr int good = 80;  // of them in the good copy
constexpr int older = 60; // and in the one before
constexpr unsigned patienceSeconds = 60;
const QString database = QStringLiteral("default.rkcfg");

QByteArray valueOf(int i)
{
    return "value-" + QByteArray::number(i) + QByteArray(30, 'x');
}

void fill(int from, int to)
{
    for (int i = from; i < to; ++i)
        putText("KWX\\Internal0", QByteArray::number(i).constData(), valueOf(i));
}

int countSound()
{
    int sound = 0;
    for (int i = 0; i < all; ++i)
        sound += text("KWX\\Internal0", QByteArray::number(i).constData()) == valueOf(i);
    return sound;
}

void makeOlder(const QString &file)
{
    const timeval past{time(nullptr) - 1200, 0};
    const timeval times[2] = {past, past};
    utimes(QFile::encodeName(file).constData(), times);
}

// Both good copies, and the rest either in the database or in a log that a killed process left.
StoreFiles makeStore(bool log)
{
    const StoreHome home;
    fill(0, older);
    save();
    makeOlder(home.database() + QStringLiteral(".good"));
    fill(older, good);
    rkCFGClose(store, 1);
    if (log) {
        Worker worker;
        for (int i = good; i < all; ++i)
            worker.ask("set KWX\\Internal0 " + QByteArray::number(i) + ' ' + valueOf(i));
        worker.kill();
    } else {
        fill(good, all);
        rkCFGClose(store, 1);
    }
    StoreFiles files;
    for (const QString &name : home.files(QStringLiteral("default.rkcfg*"))) {
        if (!name.endsWith(QStringLiteral("-shm")))
            files.insert(name, content(home.path(name)));
    }
    return files;
}

// What a hang leaves behind for who looks into it.
QByteArray current;

void tellHang(int)
{
    const QByteArray line = "hangs: " + current + '\n';
    if (write(STDOUT_FILENO, line.constData(), size_t(line.size())) < 0)
        _exit(2);
    _exit(1);
}

class Campaign {
public:
    Campaign() : m_stores{makeStore(false), makeStore(true)} {}

    void one(long number)
    {
        const bool log = campaign::draw(2) == 0;
        StoreFiles files = m_stores[log];
        const Mutation &mutation = drawMutation(files);
        mutation.apply(files[QLatin1String(mutation.file)]);
        const int copies = damageCopies(files);
        current = QByteArray::number(int(number)) + ": " + mutation.name + (log ? ", log left behind" : "") +
                  (copies > 0 ? ", good copy damaged" : "");
        const StoreHome home;
        QDir().mkpath(home.folder());
        for (auto it = files.cbegin(); it != files.cend(); ++it)
            overwrite(home.path(it.key()), it.value());
        alarm(patienceSeconds);
        const long before = m_problems.count();
        judge(home, files, copies > 0 ? older : good);
        alarm(0);
        if (m_problems.count() > before)
            keep(number, files);
    }
    int finish(long done) const
    {
        return campaign::finish(
            m_problems,
            "%ld mutations: %ld read all the same, %ld set aside, %ld left to a newer version, %ld wrong",
            done, m_sound, m_aside, m_left, m_problems.count());
    }
    long problems() const { return m_problems.count(); }

private:
    // CAMPAIGN_KEEP names a folder for the files of what went wrong.
    static void keep(long number, const StoreFiles &files)
    {
        const QString folder =
            QStringLiteral("%1/%2/").arg(qEnvironmentVariable("CAMPAIGN_KEEP")).arg(number);
        if (!qEnvironmentVariableIsSet("CAMPAIGN_KEEP") || !QDir().mkpath(folder))
            return;
        for (auto it = files.cbegin(); it != files.cend(); ++it)
            overwrite(folder + it.key(), it.value());
    }
    static const Mutation &drawMutation(const StoreFiles &files)
    {
        for (;;) {
            const Mutation &mutation = mutations[campaign::draw(mutationCount)];
            if (!files.value(QLatin1String(mutation.file)).isEmpty())
                return mutation;
        }
    }
    // Now and then the good copy is no better; then there is the older one.
    static int damageCopies(StoreFiles &files)
    {
        if (campaign::draw(5) != 0)
            return 0;
        files[database + QStringLiteral(".good")] =
            noise(int(campaign::draw(20000)), quint32(campaign::draw(1000)));
        return 1;
    }
    // Bytes 60 to 63: the version of what a program with more knowledge than ours has written.
    static bool ofNewerVersion(const StoreFiles &files)
    {
        const QByteArray version = files.value(database).mid(60, 4);
        return version.startsWith(QByteArray(3, '\0')) && version.at(3) > 1 && version.at(3) < 10;
    }
    void judge(const StoreHome &home, const StoreFiles &files, int least)
    {
        takeLog();
        const int sound = countSound();
        if (sound == 0 && home.quarantined().isEmpty() && ofNewerVersion(files)) {
            ++m_left;
            return;
        }
        if (sound < least)
            m_problems.add("%s: %d values", current.constData(), sound);
        goOn();
        const int aside = home.quarantined().size();
        const QStringList lines = takeLog();
        if (aside > 1 || lines.size() != aside)
            m_problems.add("%s: %d set aside, the log says:\n%s", current.constData(), aside,
                           qPrintable(lines.join(QLatin1Char('\n'))));
        (aside > 0 ? m_aside : m_sound) += 1;
    }
    void goOn()
    {
        const bool stored = putNumber("p", "n", 7) && rkCFGClose(store, 1) == 0;
        if (!stored || number("p", "n") != 7u)
            m_problems.add("%s: nothing can be stored afterwards", current.constData());
    }

    StoreFiles m_stores[2];
    campaign::Problems m_problems;
    long m_sound = 0;
    long m_aside = 0;
    long m_left = 0;
};

} // namespace

int main()
{
    const campaign::WorkFolder folder;
    setenv("TMPDIR", folder.path().c_str(), 1);
    signal(SIGALRM, tellHang);
    Campaign corruption;
    const long wanted = campaign::amount(500);
    long done = 0;
    for (; done < wanted && corruption.problems() < 30; ++done)
        corruption.one(done);
    return corruption.finish(done);
}
