// SPDX-License-Identifier: MIT
//
// What comes over the page and beside it, at one screen resolution (one run of this program each): the bar,
// the line, the menu, the history, the progress of a file command. All of each text is seen. A picture of
// each is left in the folder "screenshots" of the build tree.
#include "app/view/fileprogress.h"
#include "channel/storehealth.h"
#include "support/filefixture.h"
#include "support/otherprogram.h"
#include "support/storeholder.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QProgressBar>
#include <QScreen>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestLookNotices : public QObject {
    Q_OBJECT

private slots:
    void init() { m_fixture = std::make_unique<FileFixture>(2); }
    void cleanup()
    {
        QFile::remove(fleetFile());
        m_fixture.reset();
    }
    void bar();
    void barOverTheSimplePage();
    void whatAFileCommandDid();
    void whatOthersChanged();
    void theFleet();
    void menuAndHistory();
    void progress();

private:
    QCorvel *q() const { return m_fixture->dialog.get(); }
    QLabel *label(const char *name) const { return q()->findChild<QLabel *>(QLatin1String(name)); }
    static QString fleetFile() { return QFileInfo(storePath()).path() + QStringLiteral("/fleet-status"); }
    void checkWhole(const char *name) const;
    static void savePicture(QWidget *window, const char *name);

    std::unique_ptr<FileFixture> m_fixture;
};

void TestLookNotices::checkWhole(const char *name) const
{
    const QLabel *notice = label(name);
    QTRY_VERIFY2(notice->isVisible(), name);
    QVERIFY2(notice->height() >= notice->heightForWidth(notice->width()), qPrintable(notice->text()));
    QVERIFY2(q()->rect().contains(notice->geometry()), name);
}

void TestLookNotices::savePicture(QWidget *window, const char *name)
{
    const QString folder = QStringLiteral(CORVEL_BUILD_DIR "/screenshots");
    QVERIFY(QDir().mkpath(folder));
    const int dpi = qRound(window->screen()->logicalDotsPerInchY());
    QVERIFY(window->grab().save(QStringLiteral("%1/%2-%3.png").arg(folder, QLatin1String(name)).arg(dpi)));
}

void TestLookNotices::bar()
{
    const StoreHolder holder([] {}, false);
    typeText(q()->m_pEditRecDstPort, QStringLiteral("5004"));
    checkWhole("storeBar");
    savePicture(q(), "bar");
}

void TestLookNotices::barOverTheSimplePage()
{
    OtherProgram::setNumber(QLatin1String(StorePath::AvHAL), MachineValue::NmosOverride, 0);
    QTRY_COMPARE(q()->m_pSwapLayout->currentIndex(), 1);
    const StoreHolder holder([] {}, false);
    typeAddress(q()->m_pSimpleAddress, QStringLiteral("239.1.1.1"));
    checkWhole("storeBar");
    const QRect address(q()->m_pSimpleAddress->mapTo(q(), QPoint()), q()->m_pSimpleAddress->size());
    QVERIFY(!label("storeBar")->geometry().intersects(address)); // there is room enough
    savePicture(q(), "bar-simple");
}

// The longest there is: a long name, and something left out for each reason.
void TestLookNotices::whatAFileCommandDid()
{
    m_fixture->write(
        QStringLiteral("the settings of the large studio at the harbour.ipp"),
        "[HalvectIpConfig]\nVersion=1.0\n[channel0]\nReceiveInterface=10.1.1.1\nColour=7\n"
        "ReceiveSourcePort=5\n[channel1]\nReceiveSourcePort=6\n[channel0]\nReceiveSourcePort=7\n");
    QVERIFY(m_fixture->load(QStringLiteral("the settings of the large studio at the harbour.ipp")));
    checkWhole("statusLine");
    savePicture(q(), "line-loaded");
}

void TestLookNotices::whatOthersChanged()
{
    {
        StoreHolder holder([] { put(0, "ReceiveDestinationPort", 7000); });
        typeText(q()->m_pEditRecDstPort, QStringLiteral("5004"));
        typeText(q()->m_pEditRecDstPort, QStringLiteral("5008"));
    }
    QTRY_VERIFY(label("statusLine")->text().startsWith(QLatin1String("Changed by another program")));
    checkWhole("statusLine");
    savePicture(q(), "line-changed");
}

void TestLookNotices::theFleet()
{
    QFile status(fleetFile());
    QVERIFY(status.open(QIODevice::WriteOnly));
    status.write(
        R"({"format":1,"role":"server","pid":)" + QByteArray::number(QCoreApplication::applicationPid()) +
        R"(,"configurations":[{"configuration":")" + QFileInfo(storePath()).completeBaseName().toUtf8() +
        R"(","server":"lon-play-17","connected":false,"since":"2026-11-20T13:59:00Z","waiting":128,)"
        R"("refused":2,"overruled":3}]})");
    status.close();
    checkWhole("statusLine");
    savePicture(q(), "line-fleet");
}

void TestLookNotices::menuAndHistory()
{
    typeAddress(q()->m_pLineRecDstAddr, QStringLiteral("239.255.255.255"));
    OtherProgram::set(1, "TransmitAncDestinationIp", QStringLiteral("239.255.255.254"));
    const QPoint place(q()->width() / 2, q()->height() - 20);
    QContextMenuEvent click(QContextMenuEvent::Mouse, place, q()->mapToGlobal(place));
    QApplication::sendEvent(q(), &click);
    const QPointer<QMenu> menu = q()->findChild<QMenu *>(QStringLiteral("historyMenu"));
    QVERIFY(menu);
    savePicture(menu, "menu");
    menu->actions().last()->trigger();
    menu->close();
    auto *list = q()->findChild<QDialog *>(QStringLiteral("historyList"));
    QVERIFY(list && QTest::qWaitForWindowExposed(list));
    savePicture(list, "history");
}

void TestLookNotices::progress()
{
    FileProgress shown(QStringLiteral("Load File"), 0);
    QVERIFY(shown.step(1, 3, 116000));
    QWidget *box = QApplication::activeModalWidget();
    QVERIFY(box && box->objectName() == QLatin1String("fileProgress"));
    for (const QLabel *text : box->findChildren<QLabel *>())
        QVERIFY2(text->width() >= text->sizeHint().width(), qPrintable(text->text()));
    for (const QPushButton *button : box->findChildren<QPushButton *>())
        QVERIFY(box->rect().contains(button->geometry()) && button->width() >= button->sizeHint().width());
    QVERIFY(box->width() >= box->fontMetrics().averageCharWidth() * 48); // the title is read, at every scale
    QVERIFY(!box->findChild<QProgressBar *>()->isTextVisible()); // white on the accent colour is not read
    savePicture(box, "progress");
}

CORVEL_DIALOG_TEST_MAIN(TestLookNotices)
#include "test_looknotices.moc"
