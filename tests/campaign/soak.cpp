// SPDX-License-Identifier: MIT
//
// A busy user for hours: fields, boxes, channels, elements, files, errors, and the software clock switched on
// and off, with a real master behind a link of its own. Descriptors and threads stay at their level, memory
// too once the first file dialog has been shown, and there are never more than four files of the log.
#include "campaign.h"
#include "platform/rkptp/ptpnet.h"
#include "support/filefixture.h"

#include <QFileInfo>

#include <algorithm>
#include <malloc.h>
#include <unistd.h>

using namespace DialogTest;

namespace {

constexpr long mostGrowthKb = 1024;
constexpr int mostLogFiles = 4;
constexpr int logLinesPerStep = 60;
constexpr int patienceMs = 60000;
constexpr double warmUp = 0.3; // of the time

struct Level {
    int descriptors = 0;
    int threads = 0;
    long memoryKb = 0;
};

long anonymousMemoryKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("RssAnon:") + 8).trimmed().split(' ').value(0).toLong();
}

int logFiles()
{
    const QDir folder(qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/corvel"));
    return folder.entryList({QStringLiteral("corvel.log*")}).size();
}

class User {
public:
    User() : m_dialog(m_fixture.dialog.get())
    {
        m_net.addLink(QStringLiteral("near0"), 1);
        m_master = m_net.startMaster(QStringLiteral("near0"), 0, QStringLiteral("001dc1.fffe.000001"));
        StoreTest::put(0, "ReceiveInterface", QStringLiteral("10.9.1.1"));
        StoreTest::put(0, "TransmitInterface", QStringLiteral("10.9.1.1"));
        StoreTest::put(0, "ReceiveFlags", 16);
        commitStore();
    }

    // One thing that a user does, drawn; now and then a larger one, in turn.
    void step()
    {
        m_steps % 40 == 0 ? largeStep() : smallStep();
        for (int i = 0; i < logLinesPerStep; ++i)
            ErrOut("soak: step %ld, line %d of the noise that fills the log: %s", m_steps, i,
                   "abcdefghijklmnopqrst");
        QCoreApplication::processEvents();
        ++m_steps;
    }
    long steps() const { return m_steps; }
    int clocks() const { return m_clocks; }
    int files() const { return m_files; }

    // With the clock off and nothing open.
    Level rest()
    {
        setClock(false);
        // Its threads and descriptors go a moment after it.
        const int threads = countOf("task");
        if (!QTest::qWaitFor([] { return childrenNamed(getpid(), "ptp4l").size() == 1; }, patienceMs))
            qFatal("only the master's ptp4l should be there");
        const bool fewer = QTest::qWaitFor([threads] { return countOf("task") < threads; }, 200);
        Q_UNUSED(fewer)
        malloc_trim(0);
        return {countOf("fd"), countOf("task"), anonymousMemoryKb()};
    }

private:
    template<typename Control>
    Control *any(std::initializer_list<Control *> controls)
    {
        return controls.begin()[campaign::draw(long(controls.size()))];
    }
    void smallStep()
    {
        QCorvel *const d = m_dialog;
        switch (campaign::draw(6)) {
        case 0:
        case 1:
            typeText(
                any({d->m_pEditRecSrcPort, d->m_pEditRecDstPort, d->m_pEditSndSrcPort, d->m_pEditSndDstPort}),
                QString::number(campaign::draw(65536)));
            break;
        case 2:
            typeAddress(any({d->m_pLineRecSrcAddr, d->m_pLineRecDstAddr, d->m_pLineSndDstAddr}),
                        QStringLiteral("239.%1.%2.%3")
                            .arg(campaign::draw(256))
                            .arg(campaign::draw(256))
                            .arg(campaign::draw(256)));
            break;
        case 3:
            click(any({d->m_pCheckRecSrcAddr, d->m_pCheckRecDstAddr, d->m_pCheckRecDstPort,
                       d->m_pCheckRecSrcPort}));
            break;
        case 4:
            click(any({d->m_pVideoConfig, d->m_pAudioConfig, d->m_pAncConfig}));
            break;
        default:
            d->m_pChannel->setCurrentIndex(int(campaign::draw(d->m_pChannel->count())));
        }
    }
    void largeStep()
    {
        if (qEnvironmentVariableIsSet("CAMPAIGN_LEAK"))
            m_leaked = dup(STDIN_FILENO);
        switch (m_large++ % 6) {
        case 0:
            setClock(true);
            break;
        case 1:
            m_files += m_fixture.save(QStringLiteral("soak.ipp"));
            break;
        case 2:
            m_files += m_fixture.load(QStringLiteral("soak.ipp"));
            break;
        case 3:
            setClock(false);
            break;
        case 4:
            m_files += m_fixture.saveElement(QStringLiteral("soak.sdp"));
            break;
        default:
            m_files += m_fixture.load(QStringLiteral("soak.sdp"));
        }
    }
    void setClock(bool software)
    {
        m_dialog->m_pChannel->setCurrentIndex(0);
        QComboBox *const combo = m_dialog->m_pComboClkSrc;
        const int index = combo->findData(quint32(ClockSource::SoftwarePtp));
        m_clocks += software;
        combo->setCurrentIndex(software ? index : index == 0 ? 1 : 0);
    }

    FileFixture m_fixture{10};
    QCorvel *m_dialog;
    PtpNet m_net;
    std::unique_ptr<Master> m_master;
    long m_steps = 0;
    int m_large = 0;
    int m_clocks = 0;
    int m_files = 0;
    int m_leaked = -1;
};

void judge(const Level &level, const Level &base, campaign::Problems &problems)
{
    if (level.descriptors > base.descriptors)
        problems.add("%d descriptors, at first %d", level.descriptors, base.descriptors);
    if (level.threads > base.threads)
        problems.add("%d threads, at first %d", level.threads, base.threads);
    if (level.memoryKb > base.memoryKb + mostGrowthKb)
        problems.add("%ld KiB of memory, at first %ld", level.memoryKb, base.memoryKb);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const QApplication application(argc, argv);
    useCorvelAppearance(*qApp);
    ErrLogSetFileName("corvel");
    campaign::Problems problems;
    User user;
    const int64_t start = campaign::nowUs();
    const int64_t whole = campaign::amount(8) * 1000000;
    const auto until = [&](double share) {
        while (double(campaign::nowUs() - start) < share * double(whole))
            user.step();
        return user.rest();
    };
    const Level base = until(warmUp);
    Level last = base;
    int mostLogs = 0;
    constexpr int looks = 7;
    for (int look = 1; look <= looks; ++look) {
        last = until(warmUp + (1 - warmUp) * look / looks);
        judge(last, base, problems);
        mostLogs = std::max(mostLogs, logFiles());
    }
    if (mostLogs > mostLogFiles)
        problems.add("%d files of the log", mostLogs);
    return campaign::finish(problems,
                            "%ld steps, clock on %d times, %d files, descriptors %d to %d, threads %d to %d, "
                            "memory %+ld KiB, %d log files",
                            user.steps(), user.clocks(), user.files(), base.descriptors, last.descriptors,
                            base.threads, last.threads, last.memoryKb - base.memoryKb, mostLogs);
}
