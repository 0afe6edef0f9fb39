// SPDX-License-Identifier: MIT
//
// QLineAddress at any speed: addresses typed by hand or by a scanner come out as they were typed, a key
// that changes no text does nothing, and the focus stays where the user put it.
#include <QMouseEvent>
#include <QRandomGenerator>

#include "addressform.h"

namespace {

// Keys go to the window, as they come from the keyboard. How many of them wait in the window system's
// queue before the event loop runs is what a speed means here.
enum Speed { OneByOne, Bursts, AllAtOnce };

class Keyboard {
public:
    Keyboard(QWidget &window, QRandomGenerator &random, Speed speed)
        : m_window(window.windowHandle()), m_random(random), m_speed(speed)
    {
    }

    void press(int key, const QString &text = QString())
    {
        qt_handleKeyEvent(m_window, QEvent::KeyPress, key, Qt::NoModifier, text, false, 1);
        qt_handleKeyEvent(m_window, QEvent::KeyRelease, key, Qt::NoModifier, text, false, 1);
        if (m_speed == OneByOne || (m_speed == Bursts && m_random.bounded(3) == 0))
            QCoreApplication::processEvents();
    }

    void type(const QString &text)
    {
        for (const QChar character : text)
            press(character.toLatin1(), QString(character));
    }

    void rest() { QCoreApplication::processEvents(); }

private:
    QWindow *m_window;
    QRandomGenerator &m_random;
    Speed m_speed;
};

// Few digits and zeros are as frequent as three digits, so that every kind of octet stands beside every
// other kind.
QString randomOctet(QRandomGenerator &random)
{
    switch (random.bounded(4)) {
    case 0:
        return QStringLiteral("0");
    case 1:
        return QString::number(random.bounded(10));
    case 2:
        return QString::number(random.bounded(10, 100));
    default:
        return QString::number(random.bounded(100, 256));
    }
}

QStringList randomAddress(QRandomGenerator &random)
{
    QStringList octets;
    for (int i = 0; i < QLineAddress::QTUTL_IP_SIZE; ++i)
        octets << randomOctet(random);
    return octets;
}

QString randomStart(QRandomGenerator &random)
{
    const char *const odd[] = {"...", "10.1..4", "a.b.c.d", "300.01.-1.1e3", "0.0.0.0", "255.255.255.255"};
    const int row = random.bounded(12);
    if (row < 6)
        return QString::fromLatin1(odd[row]);
    return randomAddress(random).join(QLatin1Char('.'));
}

void typeWithDots(Keyboard &keyboard, const QStringList &octets, QRandomGenerator &random)
{
    for (int i = 0; i < octets.size(); ++i) {
        if (i > 0)
            keyboard.type(random.bounded(4) ? QStringLiteral(".") : QStringLiteral(","));
        keyboard.type(octets.at(i));
    }
}

// Three digits and a lone zero hand on by themselves. After one or two digits the field cannot know that
// the octet is finished ("1234" is 1.2.3.4 as well as 123.4), so a key says so: ".", "," Right or Tab.
void typeWithoutDots(Keyboard &keyboard, const QStringList &octets, QRandomGenerator &random)
{
    const int moving[] = {Qt::Key_Period, Qt::Key_Comma, Qt::Key_Right, Qt::Key_Tab};
    for (int i = 0; i < octets.size(); ++i) {
        const QString &octet = octets.at(i);
        keyboard.type(octet);
        if (i + 1 < octets.size() && octet.length() < 3 && octet != QLatin1String("0"))
            keyboard.press(moving[random.bounded(4)]);
    }
}

} // namespace

class TestLineAddressTyping : public QObject {
    Q_OBJECT

private slots:
    void tenThousandAddresses_data();
    void tenThousandAddresses();
    void habitualDot_data();
    void habitualDot();
    void fastKeysGoWhereSlowOnesGo_data();
    void fastKeysGoWhereSlowOnesGo();
    void fastEscapeReachesTheWindowOnce();
    void bareModifiersDoNothing_data();
    void bareModifiersDoNothing();
    void commandKeysDoNothing_data();
    void commandKeysDoNothing();
    void shiftedKeysAreKeys();
    void shiftTabLeavesEveryOctet_data();
    void shiftTabLeavesEveryOctet();
    void clickElsewhereIsNotPulledBack();
    void clickIntoAnotherOctetStays();
    void queuedKeysCanBeFinished();
    void queuedKeyIsToldBeforeLeaving_data();
    void queuedKeyIsToldBeforeLeaving();
};

void TestLineAddressTyping::tenThousandAddresses_data()
{
    QTest::addColumn<bool>("dots");
    QTest::addColumn<int>("speed");
    QTest::addColumn<int>("count");
    for (const bool dots : {true, false}) {
        const char *const kind = dots ? "dots" : "no dots";
        QTest::addRow("%s, one by one", kind) << dots << int(OneByOne) << 2500;
        QTest::addRow("%s, in bursts", kind) << dots << int(Bursts) << 5000;
        QTest::addRow("%s, all at once", kind) << dots << int(AllAtOnce) << 2500;
    }
}

void TestLineAddressTyping::tenThousandAddresses()
{
    QFETCH(bool, dots);
    QFETCH(int, speed);
    QFETCH(int, count);
    AddressForm form;
    QVERIFY(form.show());
    form.window.setUpdatesEnabled(false); // twenty thousand addresses need not be painted
    QRandomGenerator random(4711);
    Keyboard keyboard(form.window, random, static_cast<Speed>(speed));
    for (int i = 0; i < count; ++i) {
        const QString start = randomStart(random);
        const QStringList octets = randomAddress(random);
        form.field.setAddress(start);
        QTest::mouseClick(form.octet(0), Qt::LeftButton);
        if (dots)
            typeWithDots(keyboard, octets, random);
        else
            typeWithoutDots(keyboard, octets, random);
        keyboard.rest();
        const QString typed = octets.join(QLatin1Char('.'));
        QVERIFY2(form.field.address() == typed,
                 qPrintable(QStringLiteral("%1 over %2 gave %3").arg(typed, start, form.field.address())));
        QCOMPARE(form.focused(), 3);
    }
    QCOMPARE(form.left.count(), 0);
}

// One dot is taken for the separator after the field has moved on by itself, and only then.
void TestLineAddressTyping::habitualDot_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("focused");
    const auto row = [](const char *keys, const char *address, int focused) {
        QTest::newRow(keys) << QString::fromLatin1(keys) << QString::fromLatin1(address) << focused;
    };
    // The field shows 11.22.33.44 before, octet 0 selected.
    row("239.", "239.22.33.44", 1);
    row("239,", "239.22.33.44", 1);
    row("0.", "0.22.33.44", 1);
    row("239.20.1.17", "239.20.1.17", 3);
    row("10.0.0.1", "10.0.0.1", 3);
    row("0.0.0.0", "0.0.0.0", 3);
    row("239..7", "239.22.7.44", 2);
    row("239.5.", "239.5.33.44", 2);
    row("239<.", "239.0.33.44", 2);
    row("25..", "25.22.33.44", 2);
    row("10.", "10.22.33.44", 1);
    row("10..", "10.22.33.44", 2);
    row("255.255.255.255.", "255.255.255.255", 3);
    row("2552552550.", "255.255.255.0", 3);
}

void TestLineAddressTyping::habitualDot()
{
    QFETCH(QString, keys);
    QFETCH(QString, address);
    QFETCH(int, focused);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.put(0, QStringLiteral("11"), -1);
    form.type(keys);
    QCOMPARE(form.field.address(), address);
    QCOMPARE(form.focused(), focused);
}

// The same keys one by one and all in one go: text, focus and number of changes are the same.
void TestLineAddressTyping::fastKeysGoWhereSlowOnesGo_data()
{
    QTest::addColumn<QList<int>>("keys");
    using Keys = QList<int>;
    const int tab = Qt::Key_Tab, back = Qt::Key_Backspace, left = Qt::Key_Left;
    QTest::newRow("four full octets") << Keys{'2', '5', '5', '2', '5', '4', '2', '5', '3', '2', '5', '2'};
    QTest::newRow("full, Backspace") << Keys{'2', '5', '5', back, '7'};
    QTest::newRow("full, Backspace twice") << Keys{'2', '5', '5', back, back};
    QTest::newRow("full, Left") << Keys{'2', '5', '5', left, '9'};
    QTest::newRow("full, Tab") << Keys{'2', '5', '5', tab, '9'};
    QTest::newRow("full, Backtab") << Keys{'2', '5', '5', Qt::Key_Backtab, '9'};
    QTest::newRow("zero, Left") << Keys{back, '0', left};
    QTest::newRow("Tab and back") << Keys{tab, back, back, Qt::Key_Backtab, '0', left, tab, Qt::Key_Backtab};
    QTest::newRow("full, Return") << Keys{'2', '5', '5', Qt::Key_Return};
    QTest::newRow("zero over a selection, Delete") << Keys{'0', Qt::Key_Delete, '9'};
    QTest::newRow("refused third digit") << Keys{'2', '5', '6', '.', '1'};
    QTest::newRow("letters") << Keys{'2', 'A', '5', '5', 'B', '1'};
    QTest::newRow("too many") << Keys{'2', '5', '5', '2', '5', '5', '2', '5', '5', '2', '5', '5', '9'};
}

void TestLineAddressTyping::fastKeysGoWhereSlowOnesGo()
{
    QFETCH(QList<int>, keys);
    QStringList results;
    QRandomGenerator random(1);
    for (const Speed speed : {OneByOne, AllAtOnce}) {
        AddressForm form;
        QVERIFY(form.show());
        form.field.setAddress(QStringLiteral("11.22.33.44"));
        form.put(0, QStringLiteral("11"), -1);
        Keyboard keyboard(form.window, random, speed);
        for (const int key : keys)
            keyboard.press(key, key < 128 ? QString(QLatin1Char(static_cast<char>(key))) : QString());
        keyboard.rest();
        results << QStringLiteral("%1, octet %2, %3 changes, left %4 times")
                       .arg(form.field.address())
                       .arg(form.focused())
                       .arg(form.changed.count())
                       .arg(form.left.count());
    }
    QCOMPARE(results.last(), results.first());
}

// A key that is handed on to the next octet is still one key for the window around it.
void TestLineAddressTyping::fastEscapeReachesTheWindowOnce()
{
    class Window : public QWidget {
    public:
        int escapes = 0;

    private:
        void keyPressEvent(QKeyEvent *event) override { escapes += event->key() == Qt::Key_Escape; }
    };
    Window window;
    QLineAddress field(&window);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTest::mouseClick(field.m_pLineEdit[0], Qt::LeftButton);
    QRandomGenerator random(1);
    Keyboard keyboard(window, random, AllAtOnce);
    keyboard.type(QStringLiteral("255"));
    keyboard.press(Qt::Key_Escape);
    keyboard.rest();
    QCOMPARE(window.escapes, 1);
}

void TestLineAddressTyping::bareModifiersDoNothing_data()
{
    QTest::addColumn<int>("key");
    const struct {
        const char *name;
        Qt::Key key;
    } keys[] = {{"Shift", Qt::Key_Shift},      {"Control", Qt::Key_Control}, {"Alt", Qt::Key_Alt},
                {"AltGr", Qt::Key_AltGr},      {"Meta", Qt::Key_Meta},       {"Caps Lock", Qt::Key_CapsLock},
                {"Num Lock", Qt::Key_NumLock}, {"Super", Qt::Key_Super_L}};
    for (const auto &entry : keys)
        QTest::newRow(entry.name) << int(entry.key);
}

void TestLineAddressTyping::bareModifiersDoNothing()
{
    QFETCH(int, key);
    QRandomGenerator random(1);
    for (const char *text : {"255", "0", "", "7"}) {
        AddressForm form;
        QVERIFY(form.show());
        form.put(1, QString::fromLatin1(text), -1);
        Keyboard(form.window, random, OneByOne).press(key);
        QCOMPARE(form.octet(1)->text(), QString::fromLatin1(text));
        QCOMPARE(form.focused(), 1);
        QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    }
    // Nor does it end what a habitual dot may follow.
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QStringLiteral("1"), -1);
    form.type(QStringLiteral("192"));
    Keyboard(form.window, random, OneByOne).press(key);
    form.type(QStringLiteral(".5"));
    QCOMPARE(form.field.address(), QStringLiteral("192.5.0.0"));
}

void TestLineAddressTyping::commandKeysDoNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    const auto row = [](const char *name, int key, Qt::KeyboardModifiers modifiers) {
        QTest::newRow(name) << key << int(modifiers);
    };
    row("Ctrl+C", Qt::Key_C, Qt::ControlModifier);
    row("Ctrl+A", Qt::Key_A, Qt::ControlModifier);
    row("Ctrl+Shift+S", Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    row("Alt+D", Qt::Key_D, Qt::AltModifier);
    row("Alt+0", Qt::Key_0, Qt::AltModifier);
    row("Ctrl+0", Qt::Key_0, Qt::ControlModifier);
    row("Meta+L", Qt::Key_L, Qt::MetaModifier);
    row("Ctrl+Period", Qt::Key_Period, Qt::ControlModifier);
    row("Ctrl+Right", Qt::Key_Right, Qt::ControlModifier);
    row("Ctrl+Insert", Qt::Key_Insert, Qt::ControlModifier);
}

void TestLineAddressTyping::commandKeysDoNothing()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    for (const char *text : {"239", "0", ""}) {
        AddressForm form;
        QVERIFY(form.show());
        form.put(0, QString::fromLatin1(text), -1);
        form.press(static_cast<Qt::Key>(key), static_cast<Qt::KeyboardModifiers>(modifiers));
        QCOMPARE(form.octet(0)->text(), QString::fromLatin1(text));
        QCOMPARE(form.focused(), 0);
        QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    }
}

void TestLineAddressTyping::shiftedKeysAreKeys()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QString(), 0);
    form.press(Qt::Key_7, Qt::ShiftModifier);
    form.press(Qt::Key_A, Qt::ShiftModifier);
    QCOMPARE(form.key.count(), 2);
    QCOMPARE(form.changed.count(), 2);
}

void TestLineAddressTyping::shiftTabLeavesEveryOctet_data()
{
    QTest::addColumn<int>("octet");
    QTest::addColumn<QString>("text");
    for (int octet = 0; octet < QLineAddress::QTUTL_IP_SIZE; ++octet) {
        for (const char *text : {"0", "255", "", "7"})
            QTest::addRow("octet %d '%s'", octet, text) << octet << QString::fromLatin1(text);
    }
}

void TestLineAddressTyping::shiftTabLeavesEveryOctet()
{
    QFETCH(int, octet);
    QFETCH(QString, text);
    AddressForm form;
    QVERIFY(form.show());
    form.put(octet, text, -1);
    form.press(Qt::Key_Shift);
    form.press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(form.focused(), octet - 1);
    QCOMPARE(form.before.hasFocus(), octet == 0);
}

void TestLineAddressTyping::clickElsewhereIsNotPulledBack()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("25"), 2);
    QTest::keyClick(form.octet(1), Qt::Key_5);
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      form.after.geometry().center());
    QCoreApplication::processEvents();
    QVERIFY(form.after.hasFocus());
    QCOMPARE(form.field.address(), QStringLiteral("1.255.0.0"));
    QCOMPARE(form.changed.count(), 1);
    QCOMPARE(form.left.count(), 1);
}

void TestLineAddressTyping::clickIntoAnotherOctetStays()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QStringLiteral("25"), 2);
    QTest::keyClick(form.octet(0), Qt::Key_5);
    QTest::mouseClick(form.octet(3), Qt::LeftButton);
    QCoreApplication::processEvents();
    QCOMPARE(form.focused(), 3);
    QCOMPARE(form.changed.count(), 1);
}

void TestLineAddressTyping::queuedKeysCanBeFinished()
{
    AddressForm form;
    QVERIFY(form.show());
    QStringList told;
    connect(&form.field, &QLineAddress::addressChanged, this, [&] { told << form.field.address(); });
    form.put(0, QString(), 0);
    QTest::keyClicks(form.octet(0), QStringLiteral("19"));
    QCOMPARE(form.changed.count(), 0);
    form.field.finishKeys();
    QCOMPARE(form.changed.count(), 2);
    QCOMPARE(told.last(), QStringLiteral("19.0.0.0"));
    QTest::keyClick(form.octet(0), Qt::Key_2);
    form.field.finishKeys();
    QCOMPARE(form.focused(), 1); // and it moves on, as the event loop would have made it
    QCoreApplication::processEvents();
    form.field.finishKeys();
    QCOMPARE(form.changed.count(), 3);
}

void TestLineAddressTyping::queuedKeyIsToldBeforeLeaving_data()
{
    QTest::addColumn<QString>("by");
    QTest::newRow("Return") << QStringLiteral("Return");
    QTest::newRow("focus") << QStringLiteral("focus");
    QTest::newRow("hidden") << QStringLiteral("hidden");
}

void TestLineAddressTyping::queuedKeyIsToldBeforeLeaving()
{
    QFETCH(QString, by);
    AddressForm form;
    QVERIFY(form.show());
    QStringList order;
    connect(&form.field, &QLineAddress::processReturn, this, [&] { order << QStringLiteral("left"); });
    connect(&form.field, &QLineAddress::addressChanged, this, [&] { order << form.field.address(); });
    form.put(3, QString(), 0);
    order.clear();
    QTest::keyClick(form.octet(3), Qt::Key_7);
    if (by == QLatin1String("Return"))
        QTest::keyClick(form.octet(3), Qt::Key_Return);
    else if (by == QLatin1String("focus"))
        form.after.setFocus();
    else
        form.window.hide();
    QCOMPARE(order.first(), QStringLiteral("1.0.0.7"));
    QCOMPARE(order.last(), QStringLiteral("left"));
    QCOMPARE(order.count(QStringLiteral("left")), 1);
    const auto told = order.size();
    QCoreApplication::processEvents();
    QCOMPARE(order.size(), told);
}

QTEST_MAIN(TestLineAddressTyping)
#include "test_lineaddress_typing.moc"
