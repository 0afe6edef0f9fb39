// SPDX-License-Identifier: MIT
// What only the settings of several servers together show.
#include "ops/batch.h"
#include "ops/sitepreflight.h"

#include <QtTest>

namespace {

ops::ServerSettings server(const char *name, const QByteArrayList &lines)
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    for (const QByteArray &line : lines) {
        const auto done = ops::setLines(line, ops::Rules(), draft);
        if (!done)
            qFatal("%s", done.failure().text.constData());
    }
    ops::Snapshot values;
    for (const ops::Change &change : draft.changes())
        values.set(change.path, change.name, *change.after);
    return {name, values};
}

QByteArrayList told(const std::vector<ops::ServerSettings> &servers)
{
    QByteArrayList lines;
    for (const ops::Finding &finding : ops::runSitePreflight(servers))
        lines.append(finding.place + ' ' + finding.rule);
    return lines;
}

const QByteArray kSends = "0/video tx.dst=239.1.1.1:5000 tx.use=dst,dst-port";
const QByteArray kReceives = "0/video rx.dst=239.1.1.1:5000 rx.use=dst,dst-port";

} // namespace

class TestSitePreflight : public QObject {
    Q_OBJECT

private slots:
    void aPlantThatFitsIsSilent();
    void aGroupOfTwoSendersIsAnError();
    void twiceOnOneServerIsThatServersOwn();
    void anotherPortIsAnotherStream();
    void whatNobodySendsIsANote();
    void aDomainUnlikeTheOthersIsTold();
    void noServersNoFindings();
};

void TestSitePreflight::aPlantThatFitsIsSilent()
{
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {kReceives})}), QByteArrayList());
}

void TestSitePreflight::aGroupOfTwoSendersIsAnError()
{
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {kSends})}),
             QByteArrayList({"lon-2 0/video tx.dst group-sent-twice"}));
}

void TestSitePreflight::twiceOnOneServerIsThatServersOwn()
{
    const QByteArray again = QByteArray(kSends).replace("0/video", "1/video");
    QCOMPARE(told({server("lon-1", {kSends, again})}), QByteArrayList());
}

void TestSitePreflight::anotherPortIsAnotherStream()
{
    const QByteArray other = QByteArray(kSends).replace(":5000", ":5002");
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {other})}), QByteArrayList());
}

void TestSitePreflight::whatNobodySendsIsANote()
{
    const auto findings = ops::runSitePreflight({server("lon-2", {kReceives})});
    QCOMPARE(findings.size(), std::size_t(1));
    QCOMPARE(findings[0].rule, "group-nobody-sends");
    QVERIFY(!ops::hasTrouble(findings));
}

void TestSitePreflight::aDomainUnlikeTheOthersIsTold()
{
    const QByteArray ptp = "0 clock=sw-ptp domain=127";
    const QByteArray other = "0 clock=sw-ptp domain=5";
    QCOMPARE(told({server("lon-1", {ptp}), server("lon-2", {ptp}), server("lon-3", {other})}),
             QByteArrayList({"lon-3 0 domain ptp-domains-differ"}));
}

void TestSitePreflight::noServersNoFindings()
{
    QCOMPARE(told({}), QByteArrayList());
}

QTEST_APPLESS_MAIN(TestSitePreflight)
#include "test_sitepreflight.moc"
