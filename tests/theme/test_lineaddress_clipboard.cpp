// SPDX-License-Identifier: MIT
//
// QLineAddress and text from elsewhere: paste, copy, the context menu, drag and drop.
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPointer>

#include "addressform.h"
#include "support/drop.h"
#include "theme/addresstext.h"

namespace {

QString clipboardText()
{
    return QGuiApplication::clipboard()->text();
}

} // namespace

class TestLineAddressClipboard : public QObject {
    Q_OBJECT

private slots:
    void init();
    void addressInText_data();
    void addressInText();
    void pastedAddress_data();
    void pastedAddress();
    void pastedAddressIsOneEdit();
    void pastedWithoutFocusTakesNone();
    void pastedOctet_data();
    void pastedOctet();
    void pasteIntoAZeroStaysThere();
    void readOnlyTakesNothing();
    void cutAndUndoAreTold();
    void copied_data();
    void copied();
    void menuCopies();
    void menuPastes_data();
    void menuPastes();
    void menuOfAnEmptyOctet();
    void menuCutsAndTells();
    void dropped_data();
    void dropped();
    void droppedBeside_data();
    void droppedBeside();

private:
    static QAction *openMenu(AddressForm &form, int index, const QString &text);
};

void TestLineAddressClipboard::init()
{
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
}

void TestLineAddressClipboard::addressInText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");
    const auto holds = [](const char *text, const char *address) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromLatin1(address);
    };
    holds("10.1.2.3", "10.1.2.3");
    holds("  10.1.2.3\t", "10.1.2.3");
    holds("10.1.2.3\n", "10.1.2.3");
    holds("\r\n10.1.2.3\r\n", "10.1.2.3");
    holds("\xc2\xa0"
          "10.1.2.3",
          "10.1.2.3"); // a blank from a web page
    holds("10.1.2.3/24", "10.1.2.3");
    holds("10.1.2.3/0", "10.1.2.3");
    holds("10.1.2.3:5004", "10.1.2.3");
    holds("10.1.2.3:65535/32", "10.1.2.3");
    holds("udp://239.20.1.17:5004", "239.20.1.17");
    holds("RTP://239.20.1.17", "239.20.1.17");
    holds("\"239.20.1.17\"", "239.20.1.17");
    holds("'239.20.1.17:5004'", "239.20.1.17");
    holds(" \"rtp://239.20.1.17:5004\" ", "239.20.1.17");
    holds("“239.20.1.17”", "239.20.1.17");
    holds("0.0.0.0", "0.0.0.0");
    holds("255.255.255.255", "255.255.255.255");
    for (const char *none : {"",
                             " ",
                             "5",
                             "10.1.2",
                             "10.1.2.3.4",
                             "10.1.2.256",
                             "10.1.2.03",
                             "10.01.2.3",
                             "10.1.2.3/33",
                             "10.1.2.3/",
                             "10.1.2.3:",
                             "10.1.2.3:65536",
                             "10.1.2.3:123456",
                             "10.1.2.3 10.1.2.4",
                             "10.1.2.3,10.1.2.4",
                             "10. 1.2.3",
                             "10..2.3",
                             ".10.1.2.3",
                             "10.1.2.3.",
                             "a10.1.2.3",
                             "10.1.2.3b",
                             "http://10.1.2.3",
                             "udp:/10.1.2.3",
                             "udp://rtp://10.1.2.3",
                             "IN IP4 10.1.2.3",
                             "-1.1.2.3",
                             "10,1,2,3",
                             "1O.1.2.3",
                             "::ffff:10.1.2.3",
                             "١٠.1.2.3"})
        holds(none, "");
}

void TestLineAddressClipboard::addressInText()
{
    QFETCH(QString, text);
    QFETCH(QString, address);
    QCOMPARE(::addressInText(text), address);
}

void TestLineAddressClipboard::pastedAddress_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("octet");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    const auto row = [](const char *before, int octet, int cursor, int key, Qt::KeyboardModifiers modifiers) {
        QTest::addRow("%s, octet %d, %x", before, octet, static_cast<unsigned>(key))
            << QString::fromLatin1(before) << octet << cursor << key << int(modifiers);
    };
    for (int octet = 0; octet < QLineAddress::QTUTL_IP_SIZE; ++octet) {
        row("11.22.33.44", octet, -1, Qt::Key_V, Qt::ControlModifier);
        row("0.0.0.0", octet, -1, Qt::Key_V, Qt::ControlModifier);
        row("255.255.255.255", octet, 3, Qt::Key_V, Qt::ControlModifier);
        row("...", octet, 0, Qt::Key_V, Qt::ControlModifier);
    }
    row("11.22.33.44", 1, 1, Qt::Key_Insert, Qt::ShiftModifier);
    row("0.0.0.0", 1, -1, Qt::Key_Insert, Qt::ShiftModifier);
}

void TestLineAddressClipboard::pastedAddress()
{
    QFETCH(QString, before);
    QFETCH(int, octet);
    QFETCH(int, cursor);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(before);
    form.put(octet, form.octet(octet)->text(), cursor);
    QGuiApplication::clipboard()->setText(QStringLiteral(" udp://239.20.1.17:5004\n"));
    form.press(static_cast<Qt::Key>(key), static_cast<Qt::KeyboardModifiers>(modifiers));
    QCOMPARE(form.field.address(), QStringLiteral("239.20.1.17"));
    QCOMPARE(form.changed.count(), 1);
    QCOMPARE(form.left.count(), 0);
    QCOMPARE(form.focused(), 3);
}

// Told after all of it is there, and before the field is left.
void TestLineAddressClipboard::pastedAddressIsOneEdit()
{
    AddressForm form;
    QVERIFY(form.show());
    QStringList told;
    connect(&form.field, &QLineAddress::addressChanged, this, [&] { told << form.field.address(); });
    form.put(1, QStringLiteral("0"), -1);
    QGuiApplication::clipboard()->setText(QStringLiteral("10.1.2.3"));
    QTest::keyClick(form.octet(1), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(told.size(), 0);
    form.after.setFocus();
    QCOMPARE(told, QStringList{QStringLiteral("10.1.2.3")});
    QCOMPARE(form.left.count(), 1);
}

void TestLineAddressClipboard::pastedWithoutFocusTakesNone()
{
    AddressForm form;
    QVERIFY(form.show());
    form.before.setFocus();
    QGuiApplication::clipboard()->setText(QStringLiteral("10.1.2.3"));
    QTest::keyClick(form.octet(1), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(form.field.address(), QStringLiteral("10.1.2.3"));
    QVERIFY(form.before.hasFocus());
}

// What is no address is the octet's business, under its rule. The focus stays, even with a full octet.
void TestLineAddressClipboard::pastedOctet_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("told");
    const auto row = [](const char *text, const char *after, int told) {
        QTest::newRow(*text ? text : "empty")
            << QString::fromLatin1(text) << QString::fromLatin1(after) << told;
    };
    for (const char *taken : {"5", "77", "255", "0"})
        row(taken, taken, 1);
    row("", "", 1); // replaces the selection, as in any line edit
    for (const char *refused : {"300", "256", "10.1.2", "10.1.2.3.4", "01", "00", " 5", "5\n", "-1", "abc",
                                "12345678901234567890", "10.1.2.3/33", "http://10.1.2.3"})
        row(refused, "22", 0);
}

void TestLineAddressClipboard::pastedOctet()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, after);
    QFETCH(int, told);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.put(1, QStringLiteral("22"), -1);
    QGuiApplication::clipboard()->setText(clipboard);
    form.press(Qt::Key_Control);
    form.press(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(form.field.address(), QStringLiteral("11.%1.33.44").arg(after));
    QCOMPARE(form.focused(), 1);
    QCOMPARE(form.changed.count(), told);
    QCOMPARE(form.key.count(), 0);
}

void TestLineAddressClipboard::pasteIntoAZeroStaysThere()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("0"), -1);
    QGuiApplication::clipboard()->setText(QStringLiteral("77"));
    form.press(Qt::Key_Control);
    form.press(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(form.field.address(), QStringLiteral("1.77.0.0"));
    QCOMPARE(form.focused(), 1);
}

void TestLineAddressClipboard::readOnlyTakesNothing()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("22"), -1);
    form.octet(1)->setReadOnly(true);
    QGuiApplication::clipboard()->setText(QStringLiteral("10.1.2.3"));
    form.press(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(form.field.address(), QStringLiteral("1.22.0.0"));
    QCOMPARE(form.changed.count(), 0);
}

void TestLineAddressClipboard::cutAndUndoAreTold()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("22"), -1);
    form.press(Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(clipboardText(), QStringLiteral("22"));
    QCOMPARE(form.field.address(), QStringLiteral("1..0.0"));
    QCOMPARE(form.changed.count(), 1);
    form.press(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(form.field.address(), QStringLiteral("1.22.0.0"));
    QCOMPARE(form.changed.count(), 2);
}

void TestLineAddressClipboard::copied_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("copied");
    QTest::newRow("nothing selected") << 0 << 0 << QStringLiteral("239.20.1.17");
    QTest::newRow("all selected") << 0 << 3 << QStringLiteral("239.20.1.17");
    QTest::newRow("part selected") << 1 << 2 << QStringLiteral("39");
}

void TestLineAddressClipboard::copied()
{
    QFETCH(int, from);
    QFETCH(int, length);
    QFETCH(QString, copied);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("239.20.1.17"));
    form.put(0, QStringLiteral("239"), 3);
    form.octet(0)->setSelection(from, length);
    form.press(Qt::Key_Control);
    form.press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(clipboardText(), copied);
    QCOMPARE(form.focused(), 0);
    QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    QCOMPARE(form.field.address(), QStringLiteral("239.20.1.17"));
}

// Opens the octet's menu as a right click does and returns its entry.
QAction *TestLineAddressClipboard::openMenu(AddressForm &form, int index, const QString &text)
{
    const QPoint middle = form.octet(index)->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle, form.octet(index)->mapToGlobal(middle));
    QCoreApplication::sendEvent(form.octet(index), &event);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    if (!menu)
        return nullptr;
    for (QAction *action : menu->actions()) {
        if (action->text().section(QLatin1Char('\t'), 0, 0).remove(QLatin1Char('&')) == text)
            return action;
    }
    return nullptr;
}

void TestLineAddressClipboard::menuCopies()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("239.20.1.17"));
    form.put(0, QStringLiteral("239"), 1);
    for (const char *entry : {"Copy Address", "Copy"}) {
        QGuiApplication::clipboard()->clear();
        QAction *action = openMenu(form, 0, QString::fromLatin1(entry));
        QVERIFY(action && action->isEnabled());
        const QPointer<QWidget> menu = QApplication::activePopupWidget();
        action->trigger();
        QCOMPARE(clipboardText(), QStringLiteral("239.20.1.17"));
        menu->close();
        QTRY_VERIFY(!menu);
    }
}

void TestLineAddressClipboard::menuPastes_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("address");
    QTest::newRow("address") << QStringLiteral("\"10.1.2.3\"") << QStringLiteral("10.1.2.3");
    QTest::newRow("octet") << QStringLiteral("77") << QStringLiteral("11.77.33.44");
}

void TestLineAddressClipboard::menuPastes()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, address);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.put(1, QStringLiteral("22"), -1);
    QGuiApplication::clipboard()->setText(clipboard);
    QAction *paste = openMenu(form, 1, QStringLiteral("Paste"));
    QVERIFY(paste && paste->isEnabled());
    form.clearSpies(); // the menu took the focus
    paste->trigger();
    QCoreApplication::processEvents();
    QCOMPARE(form.field.address(), address);
    QCOMPARE(form.changed.count(), 1);
    QApplication::activePopupWidget()->close();
}

void TestLineAddressClipboard::menuOfAnEmptyOctet()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("10..1.2"));
    QAction *action = openMenu(form, 1, QStringLiteral("Copy Address"));
    QVERIFY(action);
    action->trigger();
    QCOMPARE(clipboardText(), QStringLiteral("10..1.2"));
    QApplication::activePopupWidget()->close();
}

void TestLineAddressClipboard::menuCutsAndTells()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("22"), -1);
    QAction *cut = openMenu(form, 1, QStringLiteral("Cut"));
    QVERIFY(cut && cut->isEnabled());
    form.clearSpies();
    cut->trigger();
    QApplication::activePopupWidget()->close();
    QCoreApplication::processEvents();
    QCOMPARE(form.changed.count(), 1);
    QCOMPARE(form.field.address(), QStringLiteral("1..0.0"));
}

void TestLineAddressClipboard::dropped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("told");
    QTest::newRow("address") << QStringLiteral("rtp://10.1.2.3:5004") << QStringLiteral("10.1.2.3") << 1;
    QTest::newRow("into an octet") << QStringLiteral("7") << QStringLiteral("11.7.33.44") << 1;
    QTest::newRow("refused") << QStringLiteral("abc") << QStringLiteral("11..33.44") << 0;
}

// Told at once: there is no focus that could be lost later.
void TestLineAddressClipboard::dropped()
{
    QFETCH(QString, text);
    QFETCH(QString, address);
    QFETCH(int, told);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11..33.44"));
    form.before.setFocus();
    QMimeData data;
    data.setText(text);
    const QPointF middle = form.octet(1)->rect().center();
    QDragEnterEvent enter(middle.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(form.octet(1), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(form.octet(1), &drop);
    QCOMPARE(form.field.address(), address);
    QCOMPARE(form.changed.count(), told);
    QVERIFY(form.before.hasFocus());
    QCoreApplication::processEvents();
    QCOMPARE(form.changed.count(), told);
}

void TestLineAddressClipboard::droppedBeside_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");
    QTest::newRow("address") << QStringLiteral("udp://10.1.2.3:5004") << QStringLiteral("10.1.2.3");
    QTest::newRow("no address") << QStringLiteral("7") << QString();
}

// The sides of the field and the dots belong to no octet: a whole address fits there, a part of one does not.
void TestLineAddressClipboard::droppedBeside()
{
    QFETCH(QString, text);
    QFETCH(QString, address);
    AddressForm form;
    QVERIFY(form.show());
    const QString before = form.field.address();
    const bool taken = dropText(&form.field, QPoint(3, form.field.height() / 2), text);
    QCOMPARE(taken, !address.isEmpty());
    QCOMPARE(form.field.address(), address.isEmpty() ? before : address);
    QCOMPARE(form.changed.count(), address.isEmpty() ? 0 : 1);
}

QTEST_MAIN(TestLineAddressClipboard)
#include "test_lineaddress_clipboard.moc"
