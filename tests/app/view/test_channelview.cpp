// SPDX-License-Identifier: MIT
//
// The channel view: which element is shown, and every value of it there and back.
#include "page.h"

#include <QtTest>

class TestChannelView : public QObject {
    Q_OBJECT

private slots:
    void element_data();
    void element();
    void noElementChosenIsVideo();
    void channel();
    void valueThereAndBack_data();
    void valueThereAndBack();
    void unknownNumberLeavesTheCombo();
    void totalIsFlowsTimesChannels();
};

void TestChannelView::element_data()
{
    QTest::addColumn<int>("typeIndex");
    QTest::addColumn<int>("radio");
    QTest::addColumn<int>("element");
    QTest::newRow("video") << 0 << 0 << int(Element::Video);
    QTest::newRow("audio") << 0 << 1 << int(Element::Audio);
    QTest::newRow("ancillary data") << 0 << 2 << int(Element::Anc);
    QTest::newRow("type 8, audio") << 2 << 1 << int(Element::Audio);
    QTest::newRow("another type, audio chosen") << 1 << 1 << int(Element::Video);
    QTest::newRow("another type, ancillary data chosen") << 1 << 2 << int(Element::Video);
}

void TestChannelView::element()
{
    QFETCH(int, typeIndex);
    QFETCH(int, radio);
    QFETCH(int, element);
    const Page page;
    const ChannelView view = page.view();
    page.controls.type->setCurrentIndex(typeIndex);
    QRadioButton *const radios[] = {page.controls.video, page.controls.audio, page.controls.anc};
    radios[radio]->setChecked(true);
    QCOMPARE(int(view.element()), element);
    QCOMPARE(view.isVideo(), element == int(Element::Video));
    QCOMPARE(view.isAudio(), element == int(Element::Audio));
    QCOMPARE(view.isAnc(), element == int(Element::Anc));
}

void TestChannelView::noElementChosenIsVideo()
{
    const Page page;
    const ChannelView view = page.view();
    QVERIFY(!view.isVideo() && !view.isAudio() && !view.isAnc());
    QVERIFY(view.element() == Element::Video);
}

void TestChannelView::channel()
{
    const Page page;
    const ChannelView view = page.view();
    page.controls.channel->setCurrentIndex(2);
    QCOMPARE(view.channel(), 2);
    page.controls.channel->clear();
    QCOMPARE(view.channel(), -1);
}

void TestChannelView::valueThereAndBack_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("text");
    QTest::newRow("source address") << int(Field::SourceAddress) << "10.1.2.3";
    QTest::newRow("source port") << int(Field::SourcePort) << "5004";
    QTest::newRow("destination address") << int(Field::DestinationAddress) << "239.1.2.3";
    QTest::newRow("destination port") << int(Field::DestinationPort) << "20000";
    QTest::newRow("interface") << int(Field::Interface) << "127.0.0.1";
    QTest::newRow("flags") << int(Field::Flags) << "21";
    QTest::newRow("channels") << int(Field::Channels) << "4";
    QTest::newRow("packet time") << int(Field::PacketTime) << "1000";
}

void TestChannelView::valueThereAndBack()
{
    QFETCH(int, field);
    QFETCH(QString, text);
    const Page page;
    ChannelView view = page.view();
    for (const Side side : {Side::Receive, Side::Send}) {
        QVERIFY(view.value(side, Field(field)) != text);
        view.show(side, Field(field), text);
        QCOMPARE(view.value(side, Field(field)), text);
        if (Field(field) == Field::Channels) // one combo for both sides
            page.controls.audioChannels->setCurrentIndex(0);
    }
}

void TestChannelView::unknownNumberLeavesTheCombo()
{
    const Page page;
    ChannelView view = page.view();
    view.show(Side::Receive, Field::PacketTime, QStringLiteral("1000"));
    view.show(Side::Receive, Field::PacketTime, QStringLiteral("333"));
    view.show(Side::Receive, Field::PacketTime, QStringLiteral("soon"));
    QCOMPARE(view.value(Side::Receive, Field::PacketTime), QStringLiteral("1000"));
    QCOMPARE(view.value(Side::Send, Field::PacketTime), QStringLiteral("125"));
}

void TestChannelView::totalIsFlowsTimesChannels()
{
    const Page page;
    ChannelView view = page.view();
    page.controls.audioFlows->setCurrentIndex(2);
    view.show(Side::Send, Field::Channels, QStringLiteral("8"));
    QCOMPARE(view.value(Side::Receive, Field::TotalChannels), QStringLiteral("24"));
}

QTEST_MAIN(TestChannelView)
#include "test_channelview.moc"
