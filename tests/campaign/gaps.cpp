// SPDX-License-Identifier: MIT
//
// A busy user while another program holds the store, or the folder of the store, or while no lock can be
// given back: the event loop never stands still for longer than one call may wait. Time in which the machine
// had no processor for us is not counted, so other load does not matter.
#include "campaign.h"
#include "support/filefixture.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/wait.h>

using namespace DialogTest;

namespace {

constexpr int64_t mostUs = 1100000;
constexpr int actionsPerHold = 25;

// ------------------------------------------------------------------------------------------------- the pulse

// Time that passed for this thread: without that in which it was ready to run and others did.
int64_t ownTimeUs()
{
    QFile file(QStringLiteral("/proc/self/schedstat"));
    const int64_t waitedNs =
        file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() : 0;
    return campaign::nowUs() - waitedNs / 1000;
}

// Beats whenever the event loop runs.
class Pulse : public QObject {
public:
    Pulse() { startTimer(1, Qt::PreciseTimer); }
    void doing(const QString &what) { m_what = what; }
    int64_t longestUs() const { return m_longestUs; }
    QString longest() const { return m_longest; }

private:
    void timerEvent(QTimerEvent *) override
    {
        const int64_t now = ownTimeUs();
        if (now - m_last > m_longestUs) {
            m_longestUs = now - m_last;
            m_longest = m_what;
        }
        m_last = now;
    }
    int64_t m_last = ownTimeUs();
    int64_t m_longestUs = 0;
    QString m_what, m_longest;
};

// -------------------------------------------------------------------------------------------- what is in the
// way

bool unlockFails = false;

int lockFile(int fd, int command, void *argument)
{
    const bool locking = command == F_SETLK || command == F_SETLKW;
    if (unlockFails && locking && static_cast<struct flock *>(argument)->l_type == F_UNLCK) {
        errno = EIO;
        return -1;
    }
    return fcntl(fd, command, argument);
}

void lockFolder()
{
    const QByteArray folder = qgetenv("XDG_CONFIG_HOME") + "/corvel/.rkcfg-lock";
    if (flock(open(folder.constData(), O_RDWR | O_CLOEXEC), LOCK_EX) != 0)
        _exit(1);
}

// Another process in the middle of `work`, which it does not come out of while this lives.
class Hold {
public:
    explicit Hold(const std::function<void()> &work)
    {
        if (pipe2(m_held, O_CLOEXEC) != 0)
            abort();
        m_process = fork();
        if (m_process == 0) {
            work();
            _exit(write(m_held[1], "", 1) == 1 ? pause() : 1);
        }
        char byte = 0;
        if (read(m_held[0], &byte, 1) != 1)
            abort();
    }
    ~Hold()
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        close(m_held[0]);
        close(m_held[1]);
    }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

private:
    int m_held[2] = {};
    pid_t m_process = 0;
};

// ------------------------------------------------------------------------------------------------------ the
// user

class User {
public:
    void hold(long number)
    {
        const char *const names[] = {"store held", "folder held", "no unlock"};
        m_state = QLatin1String(names[number % 3]);
        std::unique_ptr<Hold> hold;
        if (number % 3 == 0)
            hold = std::make_unique<Hold>([] { rkCFGBegin(RKCFG_DEFAULT_STORE); });
        else if (number % 3 == 1)
            hold = std::make_unique<Hold>(lockFolder);
        unlockFails = number % 3 == 2;
        for (int i = 0; i < actionsPerHold; ++i)
            act();
        unlockFails = false;
        hold.reset();
        m_pulse.doing(QStringLiteral("letting go"));
        act();
    }
    int finish(long holds) const
    {
        campaign::Problems problems;
        if (m_pulse.longestUs() > mostUs)
            problems.add("the window stood still for %.3f s: %s", double(m_pulse.longestUs()) / 1e6,
                         qPrintable(m_pulse.longest()));
        return campaign::finish(problems, "%ld holds, %ld actions, longest gap %.3f s (%s)", holds, m_actions,
                                double(m_pulse.longestUs()) / 1e6, qPrintable(m_pulse.longest()));
    }

private:
    struct Action {
        const char *name;
        std::function<void()> run;
    };

    void act()
    {
        const Action &action = m_actionTable[size_t(campaign::draw(long(m_actionTable.size())))];
        m_pulse.doing(QLatin1String(action.name) + QStringLiteral(", ") + m_state);
        action.run();
        if (m_actions == 0 && getenv("CAMPAIGN_LINGER") != nullptr)
            usleep(mostUs + 100000);
        for (int64_t end = campaign::nowUs() + 20000; campaign::nowUs() < end;)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        ++m_actions;
    }
    static void next(QComboBox *combo)
    {
        combo->setCurrentIndex((combo->currentIndex() + 1) % combo->count());
    }
    QString port() { return QString::number(1000 + campaign::draw(60000)); }

    FileFixture m_fixture;
    QCorvel *m_dialog = m_fixture.dialog.get();
    Pulse m_pulse;
    QString m_state;
    long m_actions = 0;
    const std::vector<Action> m_actionTable{
        {"port", [this] { enterPort(m_dialog->m_pEditRecDstPort, port()); }},
        {"address",
         [this] { QTest::keyClicks(m_dialog->m_pLineSndDstAddr->m_pLineEdit[3], QStringLiteral("7")); }},
        {"use", [this] { m_dialog->m_pCheckRecDstAddr->toggle(); }},
        {"lock", [this] { m_dialog->m_pCheckLockSndSrcPort->toggle(); }},
        {"lock all", [this] { m_dialog->m_pCheckLockGroup->toggle(); }},
        {"channel", [this] { next(m_dialog->m_pChannel); }},
        {"audio", [this] { m_dialog->m_pAudioConfig->click(); }},
        {"video", [this] { m_dialog->m_pVideoConfig->click(); }},
        {"format", [this] { next(m_dialog->m_pComboVidFormat); }},
        {"configuration", [this] { next(m_dialog->m_pConfig); }},
        {"log", [this] { m_dialog->m_pNmosOutLog->toggle(); }},
        {"node", [this] { m_dialog->onSetNmosCfg(); }},
        {"take back",
         [this] { QTest::keyClick(m_dialog, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }},
        {"interface",
         [this] { QTest::keyClicks(m_dialog->m_pEditRecIFace->m_pLineEdit[3], QStringLiteral("1")); }},
        {"start", [] { QCorvel(true, nullptr).show(); }},
    };
};

} // namespace

int main(int argc, char **argv)
{
    const campaign::WorkFolder folder;
    qputenv("TMPDIR", folder.path().c_str());
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const QApplication application(argc, argv);
    useCorvelAppearance(*qApp);
    sqlite3_vfs *const vfs = sqlite3_vfs_find(nullptr);
    vfs->xSetSystemCall(vfs, "fcntl", reinterpret_cast<sqlite3_syscall_ptr>(lockFile));
    const FreshStore store;
    rkCFGSetDefaultName("van");
    rkCFGSetDefaultName("default");
    User user;
    const long wanted = campaign::amount(3);
    for (long number = 0; number < wanted; ++number)
        user.hold(number);
    return user.finish(wanted);
}
