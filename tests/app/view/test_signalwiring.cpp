// SPDX-License-Identifier: MIT
//
// The list of connections: made and undone as a whole, counted, and never another receiver's.
#include "app/view/signalwiring.h"

#include <QtTest>

class Sender : public QObject {
    Q_OBJECT

signals:
    void pressed();
    void chosen(int index);
};

class Receiver : public QObject {
    Q_OBJECT

public:
    QStringList heard;

public slots:
    void onPressed() { heard.append(QStringLiteral("pressed")); }
    void onPressedAgain() { heard.append(QStringLiteral("again")); }
    void onChosen(int index) { heard.append(QString::number(index)); }
};

class TestSignalWiring : public QObject {
    Q_OBJECT

private slots:
    void init();
    void startsDisconnected();
    void slotsRunInTheOrderOfTheList();
    void nestedPairsTouchNothing();
    void tooManyConnectsDoNotCount();
    void otherReceiversStay();

private:
    // Presses once and gives what was heard of it.
    QStringList press()
    {
        m_receiver->heard.clear();
        emit m_sender->pressed();
        return m_receiver->heard;
    }

    std::unique_ptr<Sender> m_sender;
    std::unique_ptr<Receiver> m_receiver;
    SignalWiring m_wiring;
};

void TestSignalWiring::init()
{
    m_sender = std::make_unique<Sender>();
    m_receiver = std::make_unique<Receiver>();
    m_wiring = SignalWiring();
    m_wiring.add(m_sender.get(), &Sender::pressed, m_receiver.get(), &Receiver::onPressedAgain);
    m_wiring.add(m_sender.get(), &Sender::pressed, m_receiver.get(), &Receiver::onPressed);
    m_wiring.add(m_sender.get(), &Sender::chosen, m_receiver.get(), &Receiver::onChosen);
}

void TestSignalWiring::startsDisconnected()
{
    QCOMPARE(press(), QStringList());
    m_wiring.disconnectAll(); // the first bracket of a dialog that is not connected yet
    m_wiring.connectAll();
    QCOMPARE(press(), QStringList());
}

void TestSignalWiring::slotsRunInTheOrderOfTheList()
{
    m_wiring.connectAll();
    QCOMPARE(press(), QStringList({QStringLiteral("again"), QStringLiteral("pressed")}));
    emit m_sender->chosen(7);
    QCOMPARE(m_receiver->heard.last(), QStringLiteral("7"));
}

void TestSignalWiring::nestedPairsTouchNothing()
{
    m_wiring.connectAll();
    m_wiring.disconnectAll();
    m_wiring.disconnectAll();
    m_wiring.connectAll();
    QCOMPARE(press(), QStringList());
    m_wiring.connectAll();
    QCOMPARE(press().size(), 2);
}

void TestSignalWiring::tooManyConnectsDoNotCount()
{
    for (int i = 0; i < 3; ++i)
        m_wiring.connectAll();
    QCOMPARE(press().size(), 2);
    m_wiring.disconnectAll();
    QCOMPARE(press(), QStringList());
}

void TestSignalWiring::otherReceiversStay()
{
    Receiver host;
    connect(m_sender.get(), &Sender::pressed, &host, &Receiver::onPressed);
    m_wiring.connectAll();
    m_wiring.disconnectAll();
    emit m_sender->pressed();
    QCOMPARE(host.heard, QStringList(QStringLiteral("pressed")));
}

QTEST_MAIN(TestSignalWiring)
#include "test_signalwiring.moc"
