// SPDX-License-Identifier: MIT
//
// The dialog is killed under the hands of somebody who types into its ports with real keys. What a second
// process has seen in the store before the kill is there after it; the field that was being typed into has
// its old value or what had been typed so far; and nothing is damaged.
#include "app/appearance.h"
#include "app/program/desktop.h"
#include "app/program/map.h"
#include "campaign.h"
#include "support/store.h"

#include <QElapsedTimer>

using namespace StoreTest;

namespace {

constexpr int patienceMs = 60000;
constexpr int longestMomentUs = 60000;

struct Field {
    const char *control;
    const char *value;
};
const Field fields[] = {{"m_pEditRecSrcPort", "ReceiveSourcePort"},
                        {"m_pEditRecDstPort", "ReceiveDestinationPort"},
                        {"m_pEditSndSrcPort", "TransmitSourcePort"},
                        {"m_pEditSndDstPort", "TransmitRemotePort"}};
constexpr size_t fieldCount = std::size(fields);

QString storedIn(size_t field)
{
    return QString::number(number(0, fields[field].value));
}

class Robot {
public:
    explicit Robot(const Desktop &desktop) : m_desktop(desktop)
    {
        const Map map;
        for (size_t i = 0; i < fieldCount; ++i)
            m_places[i] = map.of(fields[i].control);
        // From here on this process only looks.
        rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    }

    void one()
    {
        Program program(m_desktop);
        if (!program.waitForWindow()) {
            m_problems.add("kill %ld: no window", m_kills);
            return;
        }
        for (size_t i = 0; i < fieldCount; ++i)
            m_seen[i] = storedIn(i);
        const long edits = 1 + campaign::draw(campaign::isLong() ? 30 : 5);
        for (long edit = 0; edit < edits; ++edit) {
            if (!editAndSee(program))
                return;
        }
        editAndKill(program);
        ++m_kills;
        judge();
    }
    long kills() const { return m_kills; }
    long problems() const { return m_problems.count(); }
    int finish() const
    {
        return campaign::finish(m_problems, "%ld dialogs killed, %ld edits seen stored, %ld lost", m_kills,
                                m_edits, m_lost);
    }

private:
    void drawEdit()
    {
        m_field = size_t(campaign::draw(fieldCount));
        m_typed = QString::number(10000 + campaign::draw(50000));
    }
    bool editAndSee(Program &program)
    {
        drawEdit();
        if (!program.replace(m_places[m_field], m_typed))
            m_problems.add("kill %ld: no hands", m_kills);
        QElapsedTimer timer;
        timer.start();
        while (storedIn(m_field) != m_typed) {
            if (timer.elapsed() > patienceMs) {
                m_problems.add("kill %ld: %s is not stored", m_kills, qPrintable(m_typed));
                return false;
            }
            usleep(500);
        }
        m_seen[m_field] = m_typed;
        ++m_edits;
        return true;
    }
    void editAndKill(Program &program)
    {
        drawEdit();
        program.replace(m_places[m_field], m_typed);
        usleep(useconds_t(campaign::draw(longestMomentUs)));
        program.process().kill();
        program.process().waitForFinished(patienceMs);
    }
    bool maybeTyped(const QString &value) const
    {
        return value == m_seen[m_field] || m_typed.startsWith(value);
    }
    void judge()
    {
        rkCFGClose(RKCFG_DEFAULT_STORE, 0); // a fresh look
        for (size_t i = 0; i < fieldCount; ++i) {
            const QString now = storedIn(i);
            if (i == m_field ? maybeTyped(now) : now == m_seen[i])
                continue;
            ++m_lost;
            m_problems.add("kill %ld: %s was %s, is %s", m_kills, fields[i].value, qPrintable(m_seen[i]),
                           qPrintable(now));
        }
        const QDir folder(qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/corvel"));
        if (!folder.entryList({QStringLiteral("*.corrupt-*")}).isEmpty())
            m_problems.add("kill %ld: a database was set aside", m_kills);
    }

    const Desktop &m_desktop;
    QPoint m_places[fieldCount];
    QString m_seen[fieldCount];
    size_t m_field = 0;
    QString m_typed;
    campaign::Problems m_problems;
    long m_kills = 0;
    long m_edits = 0;
    long m_lost = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const QApplication application(argc, argv);
    useCorvelAppearance(*qApp);
    const FreshStore store;
    setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 1);
    const Desktop desktop;
    if (!desktop.isRunning()) {
        puts("Xvfb did not start");
        return 1;
    }
    Robot robot(desktop);
    const long wanted = campaign::amount(20);
    while (robot.kills() < wanted && robot.problems() < 5)
        robot.one();
    return robot.finish();
}
