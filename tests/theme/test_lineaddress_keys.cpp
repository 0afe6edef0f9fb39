// SPDX-License-Identifier: MIT
//
// QLineAddress under the fingers: what each key does, typed addresses good and bad, Return.
#include "addressform.h"

namespace {

const int selectAll = -1;

QString octetText(const QString &address, int index)
{
    return address.section(QLatin1Char('.'), index, index);
}

} // namespace

class TestLineAddressKeys : public QObject {
    Q_OBJECT

private slots:
    void oneKey_data();
    void oneKey();
    void moveSelectsTheWholeOctet_data();
    void moveSelectsTheWholeOctet();
    void moveDoesNotWaitForTheLoop_data();
    void moveDoesNotWaitForTheLoop();
    void typed_data();
    void typed();
    void otherKeysMoveOnFromAFullOctet_data();
    void otherKeysMoveOnFromAFullOctet();
    void keypad();
    void returnLeavesEveryOctet_data();
    void returnLeavesEveryOctet();
    void returnAnnouncesThenLeaves();
    void returnGoesToTheParentNotTheWindow();
    void returnWithoutParentClearsTheFocus_data();
    void returnWithoutParentClearsTheFocus();
    void withoutParentTypingStillMovesOn();
    void backspaceIsOnlyToldOnLeaving();
    void zeroFillIsOnlyToldOnLeaving();
    void foreignTextCanBeTypedOver();
};

// One key into one octet of 11.22.33.44. The columns are the octet's text and cursor before, then
// its text, the octet with the focus and the number of announcements after.
void TestLineAddressKeys::oneKey_data()
{
    QTest::addColumn<int>("octet");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("focused");
    QTest::addColumn<int>("announced");
    const auto row = [](const char *name, int octet, const char *text, int cursor, Qt::Key key,
                        const char *after, int focused, int announced) {
        QTest::newRow(name) << octet << QString::fromLatin1(text) << cursor << static_cast<int>(key)
                            << QString::fromLatin1(after) << focused << announced;
    };
    // clang-format off
    row("Backspace, empty",                2, "",    0,         Qt::Key_Backspace, "0",   1, 0);
    row("Backspace, empty octet 3",        3, "",    0,         Qt::Key_Backspace, "0",   2, 0);
    row("Backspace, empty octet 0",        0, "",    0,         Qt::Key_Backspace, "0",   0, 0);
    row("Backspace, at start",             2, "123", 0,         Qt::Key_Backspace, "123", 1, 0);
    row("Backspace, zero at start",        1, "0",   0,         Qt::Key_Backspace, "0",   0, 0);
    row("Backspace, at start of octet 0",  0, "123", 0,         Qt::Key_Backspace, "123", 0, 0);
    row("Backspace, at end",               2, "123", 3,         Qt::Key_Backspace, "12",  2, 0);
    row("Backspace, in the middle",        2, "123", 1,         Qt::Key_Backspace, "23",  2, 0);
    row("Backspace, last digit",           2, "1",   1,         Qt::Key_Backspace, "",    2, 0);
    row("Backspace, all selected",         2, "123", selectAll, Qt::Key_Backspace, "",    2, 0);
    row("Backspace, octet 0 selected",     0, "123", selectAll, Qt::Key_Backspace, "",    0, 0);

    row("Left, empty",                     2, "",    0,         Qt::Key_Left,      "0",   1, 0);
    row("Left, empty octet 0",             0, "",    0,         Qt::Key_Left,      "0",   0, 0);
    row("Left, at start",                  1, "12",  0,         Qt::Key_Left,      "12",  0, 0);
    row("Left, at start of octet 0",       0, "12",  0,         Qt::Key_Left,      "12",  0, 0);
    row("Left, all selected",              3, "12",  selectAll, Qt::Key_Left,      "12",  2, 0);
    row("Left, octet 0 selected",          0, "12",  selectAll, Qt::Key_Left,      "12",  0, 0);
    row("Left, at end",                    1, "12",  2,         Qt::Key_Left,      "12",  1, 0);
    row("Left, zero at end",               1, "0",   1,         Qt::Key_Left,      "0",   1, 0);

    row("Right, empty",                    2, "",    0,         Qt::Key_Right,     "0",   3, 0);
    row("Right, empty octet 3",            3, "",    0,         Qt::Key_Right,     "0",   3, 0);
    row("Right, at end",                   0, "12",  2,         Qt::Key_Right,     "12",  1, 0);
    row("Right, at end of octet 3",        3, "12",  2,         Qt::Key_Right,     "12",  3, 0);
    row("Right, all selected",             1, "12",  selectAll, Qt::Key_Right,     "12",  2, 0);
    row("Right, at start",                 1, "12",  0,         Qt::Key_Right,     "12",  1, 0);
    row("Right, in the middle",            1, "12",  1,         Qt::Key_Right,     "12",  1, 0);

    row("Period, empty",                   1, "",    0,         Qt::Key_Period,    "0",   2, 0);
    row("Period, at start",                1, "12",  0,         Qt::Key_Period,    "12",  2, 0);
    row("Period, in the middle",           1, "12",  1,         Qt::Key_Period,    "12",  2, 0);
    row("Period, all selected",            1, "12",  selectAll, Qt::Key_Period,    "12",  2, 0);
    row("Period, octet 3",                 3, "12",  2,         Qt::Key_Period,    "12",  3, 0);
    row("Period, octet 3 selected",        3, "12",  selectAll, Qt::Key_Period,    "12",  3, 0);
    row("Period, empty octet 3",           3, "",    0,         Qt::Key_Period,    "0",   3, 0);
    row("Comma, empty",                    0, "",    0,         Qt::Key_Comma,     "0",   1, 0);
    row("Comma, at end",                   0, "255", 3,         Qt::Key_Comma,     "255", 1, 0);
    row("Comma, octet 3",                  3, "255", 3,         Qt::Key_Comma,     "255", 3, 0);

    row("0, empty",                        1, "",    0,         Qt::Key_0,         "0",   2, 1);
    row("0, onto zero",                    1, "0",   1,         Qt::Key_0,         "0",   2, 1);
    row("0, onto zero selected",           1, "0",   selectAll, Qt::Key_0,         "0",   2, 1);
    row("0, before zero",                  1, "0",   0,         Qt::Key_0,         "0",   2, 1);
    row("0, empty octet 3",                3, "",    0,         Qt::Key_0,         "0",   3, 1);
    row("0, onto zero in octet 3",         3, "0",   selectAll, Qt::Key_0,         "0",   3, 1);
    row("0, makes 10",                     1, "1",   1,         Qt::Key_0,         "10",  1, 1);
    row("0, makes 100",                    1, "10",  2,         Qt::Key_0,         "100", 2, 1);
    row("0, would make 01",                1, "1",   0,         Qt::Key_0,         "1",   1, 1);
    row("0, over a selection",             1, "12",  selectAll, Qt::Key_0,         "0",   2, 1);

    row("digit, into empty",               1, "",    0,         Qt::Key_7,         "7",   1, 1);
    row("digit, second",                   1, "7",   1,         Qt::Key_7,         "77",  1, 1);
    row("digit, third",                    1, "17",  2,         Qt::Key_7,         "177", 2, 1);
    row("digit, third in octet 3",         3, "17",  2,         Qt::Key_7,         "177", 3, 1);
    row("digit, third set in front",       1, "23",  0,         Qt::Key_1,         "123", 1, 1);
    row("digit, third too large",          1, "25",  2,         Qt::Key_6,         "25",  1, 1);
    row("digit, onto zero",                2, "0",   1,         Qt::Key_5,         "0",   3, 1);
    row("digit, over a selected zero",     2, "0",   selectAll, Qt::Key_5,         "5",   2, 1);
    row("letter",                          1, "7",   1,         Qt::Key_A,         "7",   1, 1);
    row("space",                           1, "7",   1,         Qt::Key_Space,     "7",   1, 1);
    row("minus",                           1, "",    0,         Qt::Key_Minus,     "",    1, 1);
    row("Delete, in the middle",           1, "123", 1,         Qt::Key_Delete,    "13",  1, 1);
    row("Delete, leaves zero",             1, "10",  0,         Qt::Key_Delete,    "0",   2, 1);
    row("Delete, all selected",            1, "123", selectAll, Qt::Key_Delete,    "",    1, 1);
    row("Home",                            1, "12",  2,         Qt::Key_Home,      "12",  1, 1);
    row("End",                             1, "12",  0,         Qt::Key_End,       "12",  1, 1);
    row("Up",                              1, "12",  2,         Qt::Key_Up,        "12",  1, 1);
    row("Down",                            1, "12",  2,         Qt::Key_Down,      "12",  1, 1);
    row("Escape",                          1, "12",  2,         Qt::Key_Escape,    "12",  1, 1);
    row("Tab, leaves an empty octet so",   1, "",    0,         Qt::Key_Tab,       "",    2, 1);
    // clang-format on
}

void TestLineAddressKeys::oneKey()
{
    QFETCH(int, octet);
    QFETCH(QString, text);
    QFETCH(int, cursor);
    QFETCH(int, key);
    QFETCH(QString, after);
    QFETCH(int, focused);
    QFETCH(int, announced);
    AddressForm form;
    QVERIFY(form.show());
    const QString start = QStringLiteral("11.22.33.44");
    form.field.setAddress(start);
    form.put(octet, text, cursor);
    form.press(static_cast<Qt::Key>(key));

    for (int i = 0; i < QLineAddress::QTUTL_IP_SIZE; ++i)
        QCOMPARE(form.octet(i)->text(), i == octet ? after : octetText(start, i));
    QCOMPARE(form.focused(), focused);
    QCOMPARE(form.key.count(), announced);
    QCOMPARE(form.changed.count(), announced);
    QCOMPARE(form.left.count(), 0);
}

void TestLineAddressKeys::moveSelectsTheWholeOctet_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("focused");
    QTest::newRow("Left") << int(Qt::Key_Left) << 0 << 0;
    QTest::newRow("Backspace") << int(Qt::Key_Backspace) << 0 << 0;
    QTest::newRow("Right") << int(Qt::Key_Right) << 2 << 2;
    QTest::newRow("Period") << int(Qt::Key_Period) << 2 << 2;
    QTest::newRow("full octet") << int(Qt::Key_2) << 2 << 2;
}

void TestLineAddressKeys::moveSelectsTheWholeOctet()
{
    QFETCH(int, key);
    QFETCH(int, cursor);
    QFETCH(int, focused);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("111.22.133.44"));
    form.octet(focused)->setCursorPosition(1);
    form.put(1, QStringLiteral("22"), cursor);
    form.press(static_cast<Qt::Key>(key));
    QCOMPARE(form.focused(), focused);
    QCOMPARE(form.octet(focused)->selectedText().length(), 3);
    QVERIFY(form.octet(focused)->hasFocus());
    form.press(Qt::Key_9); // and so the next digit replaces it
    QCOMPARE(form.octet(focused)->text(), QStringLiteral("9"));
}

// Two keys that arrive together: the first one's move takes effect before the second is looked at.
void TestLineAddressKeys::moveDoesNotWaitForTheLoop_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("key");
    QTest::newRow("0 into empty") << QString() << int(Qt::Key_0);
    QTest::newRow("0 onto zero") << QStringLiteral("0") << int(Qt::Key_0);
    QTest::newRow("Period") << QStringLiteral("12") << int(Qt::Key_Period);
    QTest::newRow("Comma") << QStringLiteral("12") << int(Qt::Key_Comma);
    QTest::newRow("Right") << QStringLiteral("12") << int(Qt::Key_Right);
}

void TestLineAddressKeys::moveDoesNotWaitForTheLoop()
{
    QFETCH(QString, text);
    QFETCH(int, key);
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, text, text.length());
    QTest::keyClick(form.octet(1), static_cast<Qt::Key>(key));
    QCOMPARE(form.focused(), 2);
    QVERIFY(form.allSelected(2));
}

// Typed into a new field that shows 1.0.0.0, octet 0 selected.
void TestLineAddressKeys::typed_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("focused");
    const auto row = [](const char *keys, const char *address, int focused) {
        QTest::newRow(keys) << QString::fromLatin1(keys) << QString::fromLatin1(address) << focused;
    };
    // clang-format off
    // whole addresses
    row("10.1.2.3",        "10.1.2.3",        3);
    row("10,1,2,3",        "10.1.2.3",        3);
    row("192168120",       "192.168.120.0",   3);
    row("192168120254",    "192.168.120.254", 3);
    row("255255255255",    "255.255.255.255", 3);
    row("239.255.1.99",    "239.255.1.99",    3); // the "." after a full octet is the one typed by habit
    row("0000",            "0.0.0.0",         3);
    row("99.99.99.99",     "99.99.99.99",     3);
    // half typed
    row("1",               "1.0.0.0",         0);
    row("19",              "19.0.0.0",        0);
    row("192",             "192.0.0.0",       1);
    row("0",               "0.0.0.0",         1);
    row("10.",             "10.0.0.0",        1);
    row("10.1",            "10.1.0.0",        1);
    row("10.1.",           "10.1.0.0",        2);
    row(".",               "1.0.0.0",         1);
    row("....5",           "1.0.0.5",         3);
    row("10..1",           "10.0.1.0",        2);
    // refused
    row("256",             "25.0.0.0",        0);
    row("300",             "30.0.0.0",        0);
    row("999",             "99.0.0.0",        0);
    row("2565",            "255.0.0.0",       1);
    row("1000",            "100.0.0.0",       2);
    row("00",              "0.0.0.0",         2);
    row("01",              "0.1.0.0",         1);
    row("007",             "0.0.7.0",         2);
    row("abc",             "1.0.0.0",         0);
    row("2a3",             "23.0.0.0",        0);
    row("0x1f",            "0.0.1.0",         2); // the "x" moves on from the zero it meets
    row("-5",              "5.0.0.0",         0);
    row("+5",              "5.0.0.0",         0);
    row("7 8",             "78.0.0.0",        0);
    row("7:8/9",           "78.0.0.0",        0);
    row("2552552552559",   "255.255.255.255", 3);
    row("1e3",             "13.0.0.0",        0);
    // corrected
    row("<",               ".0.0.0",          0);
    row("<<",              "0.0.0.0",         0);
    row("<<<",             "0.0.0.0",         0);
    row("<5",              "5.0.0.0",         0);
    row("<.",              "0.0.0.0",         1);
    row("<0",              "0.0.0.0",         1);
    row("195<2",           "195.2.0.0",       1);
    row("12.<<",           "12.0.0.0",        0);
    row("12.<<<",          ".0.0.0",          0);
    row("12.<<7",          "7.0.0.0",         0);
    row("25<<<<",          "0.0.0.0",         0);
    // clang-format on
}

void TestLineAddressKeys::typed()
{
    QFETCH(QString, keys);
    QFETCH(QString, address);
    QFETCH(int, focused);
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QStringLiteral("1"), selectAll);
    form.type(keys);
    QCOMPARE(form.field.address(), address);
    QCOMPARE(form.focused(), focused);
    QCOMPARE(form.left.count(), 0);
    const auto silent =
        keys.count(QLatin1Char('<')) + keys.count(QLatin1Char('.')) + keys.count(QLatin1Char(','));
    QCOMPARE(form.key.count(), keys.length() - silent);
    QCOMPARE(form.changed.count(), form.key.count());
}

void TestLineAddressKeys::otherKeysMoveOnFromAFullOctet_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("focused");
    const struct {
        const char *name;
        Qt::Key key;
        bool cursorStays; // Home and Up take it away from the end, and with it the reason to move on
    } keys[] = {{"letter", Qt::Key_A, true},      {"End", Qt::Key_End, true}, {"Tab", Qt::Key_Tab, true},
                {"Escape", Qt::Key_Escape, true}, {"F1", Qt::Key_F1, true},   {"Home", Qt::Key_Home, false},
                {"Delete", Qt::Key_Delete, true}};
    for (const auto &entry : keys) {
        QTest::addRow("%s in 255", entry.name)
            << QStringLiteral("255") << int(entry.key) << (entry.cursorStays ? 2 : 1);
        QTest::addRow("%s in 0", entry.name) << QStringLiteral("0") << int(entry.key) << 2;
    }
}

void TestLineAddressKeys::otherKeysMoveOnFromAFullOctet()
{
    QFETCH(QString, text);
    QFETCH(int, key);
    QFETCH(int, focused);
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, text, text.length());
    form.press(static_cast<Qt::Key>(key));
    QCOMPARE(form.octet(1)->text(), text);
    QCOMPARE(form.focused(), focused);
    QCOMPARE(form.changed.count(), 1);
}

void TestLineAddressKeys::keypad()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QStringLiteral("1"), selectAll);
    for (const Qt::Key key :
         {Qt::Key_1, Qt::Key_9, Qt::Key_2, Qt::Key_0, Qt::Key_7, Qt::Key_Comma, Qt::Key_8})
        form.press(key, Qt::KeypadModifier);
    QCOMPARE(form.field.address(), QStringLiteral("192.0.7.8"));
    QCOMPARE(form.focused(), 3);
    QCOMPARE(form.changed.count(), 6);
    form.press(Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(form.left.count(), 1);
    QCOMPARE(form.focused(), -1);
}

void TestLineAddressKeys::returnLeavesEveryOctet_data()
{
    QTest::addColumn<int>("octet");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("key");
    const struct {
        const char *text;
        const char *after;
    } texts[] = {{"", "0"}, {"0", "0"}, {"12", "12"}, {"255", "255"}, {"x.y", "x.y"}};
    for (int octet = 0; octet < QLineAddress::QTUTL_IP_SIZE; ++octet) {
        for (const auto &entry : texts) {
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
                QTest::addRow("%s, octet %d '%s'", key == Qt::Key_Enter ? "Enter" : "Return", octet,
                              entry.text)
                    << octet << QString::fromLatin1(entry.text) << QString::fromLatin1(entry.after)
                    << int(key);
            }
        }
    }
}

void TestLineAddressKeys::returnLeavesEveryOctet()
{
    QFETCH(int, octet);
    QFETCH(QString, text);
    QFETCH(QString, after);
    QFETCH(int, key);
    AddressForm form;
    QVERIFY(form.show());
    form.put(octet, text, text.length());
    form.press(static_cast<Qt::Key>(key));
    QCOMPARE(form.octet(octet)->text(), after);
    QCOMPARE(form.window.focusWidget(), &form.window); // and the focus stays there
    QCOMPARE(form.left.count(), 1);
    QCOMPARE(form.changed.count(), 1);
    QCOMPARE(form.key.count(), 1);
}

void TestLineAddressKeys::returnAnnouncesThenLeaves()
{
    AddressForm form;
    QVERIFY(form.show());
    QStringList order;
    connect(&form.field, &QLineAddress::signalTextChanged, this,
            [&](QLineEdit *edit) { order << QStringLiteral("announced '%1'").arg(edit->text()); });
    connect(&form.field, &QLineAddress::processReturn, this, [&] { order << QStringLiteral("left"); });
    connect(&form.field, &QLineAddress::addressChanged, this, [&] { order << QStringLiteral("changed"); });
    form.put(1, QString(), 0);
    order.clear();
    form.press(Qt::Key_Return);
    QCOMPARE(order.join(QLatin1Char(' ')), QStringLiteral("announced '0' changed left"));
}

void TestLineAddressKeys::returnGoesToTheParentNotTheWindow()
{
    // A box that remembers why it was given the focus.
    class Box : public QWidget {
    public:
        using QWidget::QWidget;
        Qt::FocusReason reason = Qt::NoFocusReason;

    private:
        void focusInEvent(QFocusEvent *event) override { reason = event->reason(); }
    };
    QWidget window;
    Box box(&window);
    QLineAddress field(&box);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field.m_pLineEdit[0]->setFocus();
    QTest::keyClick(field.m_pLineEdit[0], Qt::Key_Return);
    QCOMPARE(window.focusWidget(), &box);
    QCOMPARE(box.reason, Qt::OtherFocusReason);
}

void TestLineAddressKeys::returnWithoutParentClearsTheFocus_data()
{
    QTest::addColumn<int>("octet");
    QTest::addColumn<QString>("text");
    for (int octet = 0; octet < QLineAddress::QTUTL_IP_SIZE; ++octet) {
        for (const char *text : {"", "0", "12", "255"})
            QTest::addRow("octet %d '%s'", octet, text) << octet << QString::fromLatin1(text);
    }
}

void TestLineAddressKeys::returnWithoutParentClearsTheFocus()
{
    QFETCH(int, octet);
    QFETCH(QString, text);
    QLineAddress field;
    field.show();
    QVERIFY(QTest::qWaitForWindowActive(&field));
    field.m_pLineEdit[octet]->setFocus();
    field.m_pLineEdit[octet]->setText(text);
    QSignalSpy changed(&field, &QLineAddress::addressChanged);
    QSignalSpy left(&field, &QLineAddress::processReturn);
    QTest::keyClick(field.m_pLineEdit[octet], Qt::Key_Return);
    QCoreApplication::processEvents();
    QVERIFY(!field.focusWidget());
    QCOMPARE(left.count(), 1);
    QCOMPARE(changed.count(), 1);

    field.m_pLineEdit[0]->setFocus(); // coming back, typing moves on as before
    field.m_pLineEdit[0]->selectAll();
    QTest::keyClicks(field.m_pLineEdit[0], QStringLiteral("192"));
    QCoreApplication::processEvents();
    QVERIFY(field.m_pLineEdit[1]->hasFocus());
}

void TestLineAddressKeys::withoutParentTypingStillMovesOn()
{
    QLineAddress field; // never shown, so nothing in it has the focus
    field.m_pLineEdit[0]->selectAll();
    QTest::keyClicks(field.m_pLineEdit[0], QStringLiteral("192"));
    QCoreApplication::processEvents();
    QCOMPARE(field.focusWidget(), field.m_pLineEdit[1]);
}

void TestLineAddressKeys::backspaceIsOnlyToldOnLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("123"), 3);
    form.type(QStringLiteral("<"));
    QCOMPARE(form.field.address(), QStringLiteral("1.12.0.0"));
    QCOMPARE(form.changed.count(), 0);
    form.after.setFocus();
    QCOMPARE(form.left.count(), 1);
}

void TestLineAddressKeys::zeroFillIsOnlyToldOnLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("10.1..4"));
    for (const Qt::Key key :
         {Qt::Key_Left, Qt::Key_Right, Qt::Key_Period, Qt::Key_Comma, Qt::Key_Backspace}) {
        form.put(2, QString(), 0);
        form.press(key);
        QCOMPARE(form.field.address(), QStringLiteral("10.1.0.4"));
        QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    }
    form.after.setFocus();
    QCOMPARE(form.left.count(), 1);
}

void TestLineAddressKeys::foreignTextCanBeTypedOver()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("a.b.c.d"));
    QTest::mouseClick(form.octet(0), Qt::LeftButton);
    form.type(QStringLiteral("10.1.2.3"));
    QCOMPARE(form.field.address(), QStringLiteral("10.1.2.3"));
}

QTEST_MAIN(TestLineAddressKeys)
#include "test_lineaddress_keys.moc"
