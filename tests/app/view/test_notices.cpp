// SPDX-License-Identifier: MIT
//
// The bar and the line: what is shown, for how long, and what comes back afterwards.
#include "app/view/notices.h"

#include <QLabel>
#include <QtTest>

#include <memory>

class TestNotices : public QObject {
    Q_OBJECT

private slots:
    void init();
    void hiddenAtFirst();
    void barStaysUntilTakenAway();
    void barGrowsWithItsText();
    void lineGrowsUpWithItsText();
    void lineEndsAfterItsTicks();
    void standingTextComesBack();
    void laterReplacesEarlier();
    void mouseGoesThrough();
    void textIsNoMarkup();

private:
    QString shown(const char *name) const
    {
        const QLabel *label = m_owner->findChild<QLabel *>(QLatin1String(name));
        return label->isHidden() ? QString() : label->text();
    }
    void tick(int times)
    {
        for (int i = 0; i < times; ++i)
            m_notices.tick();
    }
    std::unique_ptr<QWidget> m_owner;
    Notices m_notices;
};

void TestNotices::init()
{
    m_owner = std::make_unique<QWidget>();
    m_notices = Notices();
    m_notices.make(m_owner.get(), m_owner->font());
}

void TestNotices::hiddenAtFirst()
{
    QCOMPARE(shown("storeBar"), QString());
    QCOMPARE(shown("statusLine"), QString());
}

void TestNotices::barStaysUntilTakenAway()
{
    m_notices.setBar(QStringLiteral("full disk"));
    tick(100000);
    QCOMPARE(shown("storeBar"), QStringLiteral("full disk"));
    m_notices.setBar(QString());
    QCOMPARE(shown("storeBar"), QString());
}

void TestNotices::barGrowsWithItsText()
{
    const QRect place(0, 40, 300, 20);
    m_notices.place(place, QRect());
    const auto *bar = m_owner->findChild<QLabel *>(QStringLiteral("storeBar"));
    m_notices.setBar(QStringLiteral("full disk"));
    QCOMPARE(bar->geometry(), place);
    const QString path = QStringLiteral("/a/folder/far/down/below/the/others");
    m_notices.setBar(path + path + path);
    const QRect grown = bar->geometry();
    QVERIFY(grown.height() >= bar->heightForWidth(300));
    QVERIFY(grown.height() > place.height());
    QCOMPARE(grown.topLeft(), place.topLeft());
    QCOMPARE(grown.width(), place.width());
    m_notices.place(place, QRect());
    QCOMPARE(bar->geometry(), grown);
    m_notices.setBar(QStringLiteral("full disk"));
    QCOMPARE(bar->geometry(), place);
}

// It stands at the lower edge of the window.
void TestNotices::lineGrowsUpWithItsText()
{
    const QRect place(20, 600, 280, 40);
    m_notices.place(QRect(), place);
    const auto *line = m_owner->findChild<QLabel *>(QStringLiteral("statusLine"));
    m_notices.setStanding(QStringLiteral("two dialogs"));
    QCOMPARE(line->geometry(), place);
    m_notices.tell(QStringLiteral("a word and another one ").repeated(20), 1);
    const QRect grown = line->geometry();
    QVERIFY(grown.height() >= line->heightForWidth(280) && grown.height() > place.height());
    QCOMPARE(grown.bottomLeft(), place.bottomLeft());
    QCOMPARE(grown.width(), place.width());
    tick(1);
    QCOMPARE(line->geometry(), place);
}

void TestNotices::lineEndsAfterItsTicks()
{
    m_notices.tell(QStringLiteral("loaded"), 3);
    tick(2);
    QCOMPARE(shown("statusLine"), QStringLiteral("loaded"));
    tick(1);
    QCOMPARE(shown("statusLine"), QString());
}

void TestNotices::standingTextComesBack()
{
    m_notices.setStanding(QStringLiteral("two dialogs"));
    QCOMPARE(shown("statusLine"), QStringLiteral("two dialogs"));
    m_notices.tell(QStringLiteral("loaded"), 1);
    QCOMPARE(shown("statusLine"), QStringLiteral("loaded"));
    m_notices.setStanding(QStringLiteral("three dialogs"));
    QCOMPARE(shown("statusLine"), QStringLiteral("loaded"));
    tick(1);
    QCOMPARE(shown("statusLine"), QStringLiteral("three dialogs"));
}

void TestNotices::laterReplacesEarlier()
{
    m_notices.tell(QStringLiteral("first"), 5);
    m_notices.tell(QStringLiteral("second"), 2);
    QCOMPARE(shown("statusLine"), QStringLiteral("second"));
    tick(2);
    QCOMPARE(shown("statusLine"), QString());
}

void TestNotices::mouseGoesThrough()
{
    for (const QLabel *label : m_owner->findChildren<QLabel *>())
        QVERIFY(label->testAttribute(Qt::WA_TransparentForMouseEvents));
}

void TestNotices::textIsNoMarkup()
{
    m_notices.setBar(QStringLiteral("<b>/a/path</b>"));
    QCOMPARE(m_owner->findChild<QLabel *>(QStringLiteral("storeBar"))->textFormat(), Qt::PlainText);
}

QTEST_MAIN(TestNotices)

#include "test_notices.moc"
