// SPDX-License-Identifier: MIT
//
// QLineAddress: clicks beside its octets, the place that Return keeps, and the mark of an address that is
// not complete.
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QMenu>

#include "addressform.h"
#include "theme/invalidmark.h"

class TestLineAddressPlaces : public QObject {
    Q_OBJECT

private slots:
    void clickBesideGoesToTheNearestOctet_data();
    void clickBesideGoesToTheNearestOctet();
    void clickOnADotIsNoWasteland();
    void otherButtonBesideDoesNothing();
    void clickBesideADisabledFieldDoesNothing();
    void tabAfterReturnGoesOn_data();
    void tabAfterReturnGoesOn();
    void placeIsForgottenWithTheFocus();
    void placeIsKeptWhileAnotherWindowIsInFront();
    void placeOfAHiddenFieldIsNone();
    void anOpenMenuCountsAsLeaving();
    void emptyOctetIsMarkedAfterLeaving();
    void loadedEmptyOctetIsMarked();
    void ownersVerdict();
    void markChangesNoText();
    void markIsARedEdge();
};

void TestLineAddressPlaces::clickBesideGoesToTheNearestOctet_data()
{
    QTest::addColumn<bool>("left");
    QTest::addColumn<int>("inset");
    QTest::addColumn<int>("octet");
    for (const int inset : {1, 20, 38}) {
        QTest::addRow("left, %d", inset) << true << inset << 0;
        QTest::addRow("right, %d", inset) << false << inset << 3;
    }
}

void TestLineAddressPlaces::clickBesideGoesToTheNearestOctet()
{
    QFETCH(bool, left);
    QFETCH(int, inset);
    QFETCH(int, octet);
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.before.setFocus();
    const QPoint there(left ? inset : form.field.width() - 1 - inset, form.field.height() / 2);
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      form.field.mapTo(&form.window, there));
    QCOMPARE(form.focused(), octet);
    QVERIFY(form.octet(octet)->hasSelectedText() && form.allSelected(octet));
    QCOMPARE(form.left.count(), 0);
}

void TestLineAddressPlaces::clickOnADotIsNoWasteland()
{
    AddressForm form;
    QVERIFY(form.show());
    form.before.setFocus();
    const QLabel *dot = form.field.findChildren<QLabel *>().at(1);
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      dot->mapTo(&form.window, dot->rect().center()));
    QVERIFY(form.focused() == 1 || form.focused() == 2);
}

void TestLineAddressPlaces::otherButtonBesideDoesNothing()
{
    AddressForm form;
    QVERIFY(form.show());
    form.before.setFocus();
    QTest::mouseClick(&form.field, Qt::RightButton, Qt::NoModifier, QPoint(5, 5));
    QVERIFY(form.before.hasFocus());
}

void TestLineAddressPlaces::clickBesideADisabledFieldDoesNothing()
{
    AddressForm form;
    QVERIFY(form.show());
    form.before.setFocus();
    form.field.setEnabled(false);
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      form.field.mapTo(&form.window, QPoint(5, 5)));
    QVERIFY(form.before.hasFocus());
}

void TestLineAddressPlaces::tabAfterReturnGoesOn_data()
{
    QTest::addColumn<int>("octet");
    QTest::addColumn<int>("enter");
    for (int octet = 0; octet < QLineAddress::QTUTL_IP_SIZE; ++octet) {
        QTest::addRow("Return, octet %d", octet) << octet << int(Qt::Key_Return);
        QTest::addRow("Enter, octet %d", octet) << octet << int(Qt::Key_Enter);
    }
}

void TestLineAddressPlaces::tabAfterReturnGoesOn()
{
    QFETCH(int, octet);
    QFETCH(int, enter);
    for (const bool back : {false, true}) {
        AddressForm form;
        QVERIFY(form.show());
        form.field.setAddress(QStringLiteral("11.22.33.44"));
        form.put(octet, QStringLiteral("55"), -1);
        form.press(static_cast<Qt::Key>(enter));
        QCOMPARE(form.window.focusWidget(), &form.window);
        QCOMPARE(form.left.count(), 1);
        if (back)
            form.press(Qt::Key_Backtab, Qt::ShiftModifier);
        else
            form.press(Qt::Key_Tab);
        const int next = back ? octet - 1 : octet + 1;
        QCOMPARE(form.focused(), next < QLineAddress::QTUTL_IP_SIZE ? next : -1);
        QCOMPARE(form.after.hasFocus(), next == QLineAddress::QTUTL_IP_SIZE);
        QCOMPARE(form.before.hasFocus(), next < 0);
        QCOMPARE(form.left.count(), 1); // passing through is no second visit
        QCOMPARE(form.changed.count(), 1);
        if (form.focused() < 0)
            continue;
        form.before.setFocus(); // the next leaving is told again
        QCOMPARE(form.left.count(), 2);
    }
}

void TestLineAddressPlaces::placeIsForgottenWithTheFocus()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(2, QStringLiteral("55"), -1);
    form.press(Qt::Key_Return);
    form.after.setFocus();
    form.window.setFocus();
    form.press(Qt::Key_Tab);
    QVERIFY(form.before.hasFocus()); // the first control of the window
}

void TestLineAddressPlaces::placeIsKeptWhileAnotherWindowIsInFront()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(2, QStringLiteral("55"), -1);
    form.press(Qt::Key_Return);
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    form.window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    QTRY_VERIFY(form.window.hasFocus());
    form.press(Qt::Key_Tab);
    QCOMPARE(form.focused(), 3);
}

void TestLineAddressPlaces::placeOfAHiddenFieldIsNone()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(2, QStringLiteral("55"), -1);
    form.press(Qt::Key_Return);
    form.field.hide();
    form.press(Qt::Key_Tab);
    QVERIFY(form.before.hasFocus());
}

// A menu takes the keys, but not the focus widget: what was typed so far is told of all the same.
void TestLineAddressPlaces::anOpenMenuCountsAsLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("20"), 2);
    QTest::keyClick(form.octet(1), Qt::Key_Backspace);
    QMenu menu;
    menu.addAction(QStringLiteral("entry"));
    menu.popup(form.window.mapToGlobal(QPoint(0, 0)));
    QVERIFY(form.octet(1)->hasFocus());
    QCOMPARE(form.left.count(), 1);
    menu.close();
    QCOMPARE(form.focused(), 1);
}

void TestLineAddressPlaces::emptyOctetIsMarkedAfterLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(1, QStringLiteral("22"), -1);
    form.press(Qt::Key_Delete);
    QVERIFY(form.field.isIncomplete());
    QVERIFY(!isMarkedInvalid(&form.field));
    bool markedWhenTold = false;
    connect(&form.field, &QLineAddress::processReturn, this,
            [&] { markedWhenTold = isMarkedInvalid(&form.field); });
    form.after.setFocus();
    QVERIFY(markedWhenTold);
    QVERIFY(form.field.property("invalid").toBool());
    QCOMPARE(form.field.address(), QStringLiteral("1..0.0"));

    form.octet(1)->setFocus(); // coming back is not enough
    QVERIFY(isMarkedInvalid(&form.field));
    form.press(Qt::Key_7);
    QVERIFY(!isMarkedInvalid(&form.field));
    form.press(Qt::Key_Backspace); // half-typed again, which is no mistake before it is left
    QVERIFY(!isMarkedInvalid(&form.field));
    form.after.setFocus();
    QVERIFY(isMarkedInvalid(&form.field));
}

void TestLineAddressPlaces::loadedEmptyOctetIsMarked()
{
    QLineAddress field;
    QVERIFY(!isMarkedInvalid(&field));
    field.setAddress(QStringLiteral("10.1..4"));
    QVERIFY(isMarkedInvalid(&field));
    field.setAddress(QStringLiteral("..."));
    QVERIFY(isMarkedInvalid(&field));
    field.setAddress(QStringLiteral("10.1.2.4"));
    QVERIFY(!isMarkedInvalid(&field));
    QVERIFY(!field.isIncomplete());
}

void TestLineAddressPlaces::ownersVerdict()
{
    QLineAddress field;
    field.setInvalid(true);
    QVERIFY(isMarkedInvalid(&field));
    field.setAddress(QStringLiteral("10.1.2.4")); // the owner has not looked yet
    QVERIFY(isMarkedInvalid(&field));
    field.setInvalid(false);
    QVERIFY(!isMarkedInvalid(&field));
    field.setAddress(QStringLiteral("10.1.2."));
    field.setInvalid(false); // an empty octet is none of the owner's business
    QVERIFY(isMarkedInvalid(&field));
}

void TestLineAddressPlaces::markChangesNoText()
{
    AddressForm form;
    form.window.setStyleSheet(QStringLiteral("QLineAddress[invalid=\"true\"] { border: 1px solid red; }"));
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("10.01.x.4"));
    const QFont font = form.octet(0)->font();
    form.field.setInvalid(true);
    QCOMPARE(form.field.address(), QStringLiteral("10.01.x.4"));
    QCOMPARE(form.octet(0)->font(), font);
    QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    for (int i = 0; i < QLineAddress::QTUTL_IP_SIZE; ++i)
        QVERIFY(!isMarkedInvalid(form.octet(i)));
}

// With the program's own style sheet, in an address and in a plain field, with the focus or without.
void TestLineAddressPlaces::markIsARedEdge()
{
    AddressForm form;
    QFile sheet(QStringLiteral(CORVEL_TEST_DATA "/../../resources/default.qss"));
    QVERIFY(sheet.open(QIODevice::ReadOnly));
    form.window.setStyleSheet(QString::fromUtf8(sheet.readAll()));
    QVERIFY(form.show());
    const auto edge = [](QWidget *field) {
        return field->grab().toImage().pixelColor(field->width() / 2, 0);
    };
    const auto isRed = [](const QColor &colour) {
        return colour.red() > 200 && colour.green() < 130 && colour.blue() < 130;
    };
    QVERIFY(!isRed(edge(&form.field)));
    QVERIFY(!isRed(edge(&form.after)));
    form.field.setInvalid(true);
    markInvalid(&form.after, true);
    QVERIFY(isRed(edge(&form.field)));
    QVERIFY(isRed(edge(&form.after)));
    form.after.setFocus();
    QVERIFY(isRed(edge(&form.after)));
    QVERIFY(!isRed(edge(&form.before)));
    form.field.setInvalid(false);
    markInvalid(&form.after, false);
    QVERIFY(!isRed(edge(&form.field)));
    QVERIFY(!isRed(edge(&form.after)));
}

QTEST_MAIN(TestLineAddressPlaces)
#include "test_lineaddress_places.moc"
