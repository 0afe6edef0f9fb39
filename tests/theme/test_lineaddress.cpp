// SPDX-License-Identifier: MIT
//
// QLineAddress apart from its keys: construction, address text, fonts, names, mouse, focus, life time.
#include <QFontInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QRegExpValidator>

#include "addressform.h"

namespace {

// Notes which of some widgets got a new font, in that order, each once.
class FontOrder : public QObject {
public:
    QStringList names;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::FontChange && !names.contains(watched->objectName()))
            names << watched->objectName();
        return QObject::eventFilter(watched, event);
    }
};

int warnings = 0;

void countWarnings(QtMsgType, const QMessageLogContext &, const QString &)
{
    ++warnings;
}

QFont pointFont(qreal points)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(points);
    return font;
}

} // namespace

class TestLineAddress : public QObject {
    Q_OBJECT

private slots:
    void newFieldShowsTheDefault();
    void metaObjectOrder();
    void enumValues();
    void frameAndLayout();
    void octetsAreBuiltAlike();
    void octetRule_data();
    void octetRule();
    void setAddressTexts_data();
    void setAddressTexts();
    void setAddressAfterAnother_data();
    void setAddressAfterAnother();
    void setAddressEmitsNothing();
    void rangeOnlyDecidesTheDefault();
    void clearedOctetGivesAnEmptyPart();
    void octetsAreOnePointSmaller();
    void octetsKeepTheFractionOfAPoint();
    void pixelSizedFontIsNotReduced();
    void onePointFontIsNotReduced();
    void setFontIsTakenLiterally();
    void setFontGoesFromLeftToRightThenFrame();
    void styleSheetAboveDoesNotChangeTheFont();
    void namesForStyleSheetAndTools();
    void accessibleNamesFollowTheField();
    void onlyOctetsTakeFocus();
    void clickSelectsTheWholeOctet_data();
    void clickSelectsTheWholeOctet();
    void dragSelectsTheWholeOctet();
    void otherButtonSelectsNothing();
    void otherWidgetsAreNotTheFiltersBusiness();
    void filterNeverKeepsAnEvent();
    void movingInsideIsNotLeaving();
    void tabOutLeavesOnce();
    void clickOutsideLeavesOnce();
    void clickIntoAnotherOctetIsNotLeaving();
    void losingTheWindowIsLeaving();
    void windowInFrontOfIt();
    void strangersAreNoOctets();
    void oneKeyOneChangeAfterTheLoop();
    void destroyedBeforeTheQueueRuns();
    void destroyedWithTheFocus();
    void deletedLaterFromItsOwnSignal();
};

void TestLineAddress::newFieldShowsTheDefault()
{
    const QLineAddress field;
    QCOMPARE(field.address(), QStringLiteral("1.0.0.0"));
    QCOMPARE(field.m_ipRange, QLineAddress::unlimited);
    QVERIFY(!field.parentWidget());
}

void TestLineAddress::metaObjectOrder()
{
    const QMetaObject &meta = QLineAddress::staticMetaObject;
    QCOMPARE(QByteArray(meta.superClass()->className()), QByteArray("QFrame"));
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 4);
    const QByteArray expected[] = {"signalTextChanged(QLineEdit*)", "addressChanged()", "processReturn()",
                                   "slotTextChanged(QLineEdit*)"};
    for (int i = 0; i < 4; ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        QCOMPARE(method.methodSignature(), expected[i]);
        QCOMPARE(method.methodType(), i < 3 ? QMetaMethod::Signal : QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Public);
    }
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void TestLineAddress::enumValues()
{
    QCOMPARE(static_cast<int>(QLineAddress::unlimited), 0);
    QCOMPARE(static_cast<int>(QLineAddress::multicast), 1);
    QCOMPARE(static_cast<int>(QLineAddress::QTUTL_IP_SIZE), 4);
    QCOMPARE(static_cast<int>(QLineAddress::MAX_DIGITS), 3);
}

void TestLineAddress::frameAndLayout()
{
    const QLineAddress field;
    QCOMPARE(field.frameShape(), QFrame::StyledPanel);
    QCOMPARE(field.frameShadow(), QFrame::Sunken);
    QCOMPARE(field.focusPolicy(), Qt::NoFocus);

    auto *row = qobject_cast<QHBoxLayout *>(field.layout());
    QVERIFY(row);
    QCOMPARE(row->contentsMargins(), QMargins(40, 0, 40, 0));
    QCOMPARE(row->spacing(), 0);
    QCOMPARE(row->count(), 7);
    for (int i = 0; i < 7; ++i) {
        const bool isOctet = i % 2 == 0;
        QCOMPARE(row->stretch(i), isOctet ? 1 : 0);
        QWidget *widget = row->itemAt(i)->widget();
        if (isOctet) {
            QCOMPARE(widget, field.m_pLineEdit[i / 2]);
        } else {
            auto *dot = qobject_cast<QLabel *>(widget);
            QVERIFY(dot);
            QCOMPARE(dot->text(), QStringLiteral("."));
        }
    }
}

void TestLineAddress::octetsAreBuiltAlike()
{
    const QLineAddress field;
    for (QLineEdit *octet : field.m_pLineEdit) {
        QCOMPARE(octet->parentWidget(), &field);
        QVERIFY(!octet->hasFrame());
        QCOMPARE(octet->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
        QCOMPARE(octet->styleSheet(), QStringLiteral("padding-top: 1px; padding-bottom: 1px;"));
        QCOMPARE(octet->font().styleHint(), QFont::Monospace);
        QCOMPARE(octet->font().styleStrategy(), QFont::PreferDefault);
        QVERIFY(octet->font().fixedPitch());
        const auto *validator = qobject_cast<const QRegExpValidator *>(octet->validator());
        QVERIFY(validator);
        QCOMPARE(validator->parent(), octet);
        QCOMPARE(validator->regExp().pattern(),
                 QStringLiteral("^(0|[1-9]|[1-9][0-9]|1[0-9][0-9]|2([0-4][0-9]|5[0-5]))$"));
        QCOMPARE(validator->regExp().caseSensitivity(), Qt::CaseSensitive);
        QCOMPARE(validator->regExp().patternSyntax(), QRegExp::RegExp);
    }
}

void TestLineAddress::octetRule_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("state");
    const auto row = [](const char *text, QValidator::State state) {
        QTest::newRow(*text ? text : "empty") << QString::fromLatin1(text) << static_cast<int>(state);
    };
    row("", QValidator::Intermediate);
    for (const char *good : {"0", "1", "9", "10", "99", "100", "199", "200", "249", "250", "255"})
        row(good, QValidator::Acceptable);
    for (const char *bad : {"00", "01", "001", "010", "256", "260", "300", "999", "1000", "-1",
                            "+1", " 1", "1 ",  "1.",  ".",   ",",   "a",   "1a",  "0x1",  "1e1"})
        row(bad, QValidator::Invalid);
}

void TestLineAddress::octetRule()
{
    QFETCH(QString, text);
    QFETCH(int, state);
    const QLineAddress field;
    int position = 0;
    for (const QLineEdit *octet : field.m_pLineEdit)
        QCOMPARE(static_cast<int>(octet->validator()->validate(text, position)), state);
}

void TestLineAddress::setAddressTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *text, const char *shown) {
        QTest::newRow(*text ? text : "empty") << QString::fromLatin1(text) << QString::fromLatin1(shown);
    };
    // The field shows 9.8.7.6 before.
    row("", "1.0.0.0");
    row("10", "10.8.7.6");
    row("10.1", "10.1.7.6");
    row("10.1.2", "10.1.2.6");
    row("10.1.2.3", "10.1.2.3");
    row("10.1.2.3.4", "10.1.2.3");
    row("1.2.3.4.5.6.7.8.9.10", "1.2.3.4");
    row("239.255.0.1", "239.255.0.1");
    row("a.b.c.d", "a.b.c.d");
    row("300.01.-1.1e3", "300.01.-1.1e3");
    row("12345.1", "12345.1.7.6");
    row("192..0.1", "192..0.1");
    row(".", "..7.6");
    row("...", "...");
    row("....", "...");
    row("10.", "10..7.6");
    row(" ", " .8.7.6");
    row(" 10.1.2.3 ", " 10.1.2.3 ");
    row("1,2,3,4", "1,2,3,4.8.7.6");
}

void TestLineAddress::setAddressTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QLineAddress field;
    field.setAddress(QStringLiteral("9.8.7.6"));
    field.setAddress(text);
    QCOMPARE(field.address(), shown);
}

void TestLineAddress::setAddressAfterAnother_data()
{
    QTest::addColumn<int>("parts");
    for (int parts = 1; parts <= 10; ++parts)
        QTest::addRow("%d parts", parts) << parts;
}

void TestLineAddress::setAddressAfterAnother()
{
    QFETCH(int, parts);
    QStringList given;
    QStringList expected{QStringLiteral("9"), QStringLiteral("8"), QStringLiteral("7"), QStringLiteral("6")};
    for (int i = 0; i < parts; ++i) {
        given << QString::number(100 + i);
        if (i < expected.size())
            expected[i] = given.last();
    }
    QLineAddress field;
    field.setAddress(QStringLiteral("9.8.7.6"));
    field.setAddress(given.join(QLatin1Char('.')));
    QCOMPARE(field.address(), expected.join(QLatin1Char('.')));
}

void TestLineAddress::setAddressEmitsNothing()
{
    AddressForm form;
    QVERIFY(form.show());
    for (const char *text : {"", "10.1.2.3", "255", "a.b.c.d", "0.0.0.0.0"}) {
        form.field.setAddress(QString::fromLatin1(text));
        QCoreApplication::processEvents();
        QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    }
}

void TestLineAddress::rangeOnlyDecidesTheDefault()
{
    QLineAddress field;
    field.setAddress(QStringLiteral("10.1.2.3"));
    field.setIpRange(QLineAddress::multicast);
    QCOMPARE(field.m_ipRange, QLineAddress::multicast);
    QCOMPARE(field.address(), QStringLiteral("10.1.2.3"));
    field.setAddress(QString());
    QCOMPARE(field.address(), QStringLiteral("239.0.0.0"));
    field.setAddress(QStringLiteral("10.1.2.3")); // a unicast address is shown all the same
    QCOMPARE(field.address(), QStringLiteral("10.1.2.3"));
    field.setIpRange(QLineAddress::unlimited);
    field.setAddress(QStringLiteral(""));
    QCOMPARE(field.address(), QStringLiteral("1.0.0.0"));
}

void TestLineAddress::clearedOctetGivesAnEmptyPart()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("10.1.9.4"));
    form.put(2, QStringLiteral("9"), 1);
    form.press(Qt::Key_Backspace);
    QTest::mouseClick(&form.after, Qt::LeftButton);
    form.after.setFocus(Qt::MouseFocusReason);
    QCOMPARE(form.field.address(), QStringLiteral("10.1..4"));
}

void TestLineAddress::octetsAreOnePointSmaller()
{
    QWidget window;
    window.setFont(pointFont(15));
    const QLineAddress field(&window);
    for (const QLineEdit *octet : field.m_pLineEdit) {
        QCOMPARE(octet->font().pointSizeF(), 14.0);
        QCOMPARE(octet->font().family(), window.font().family());
    }
    QCOMPARE(field.font().pointSizeF(), 15.0);
}

void TestLineAddress::octetsKeepTheFractionOfAPoint()
{
    QWidget window;
    window.setFont(pointFont(10.5));
    const QLineAddress field(&window);
    QCOMPARE(field.m_pLineEdit[0]->font().pointSizeF(), 9.5);
}

void TestLineAddress::pixelSizedFontIsNotReduced()
{
    QFont pixels(QStringLiteral("DejaVu Sans"));
    pixels.setPixelSize(17);
    QWidget window;
    window.setFont(pixels);
    warnings = 0;
    const QtMessageHandler former = qInstallMessageHandler(countWarnings);
    const QLineAddress field(&window);
    qInstallMessageHandler(former);
    QCOMPARE(warnings, 0); // Qt complains about a point size that is none
    for (const QLineEdit *octet : field.m_pLineEdit) {
        QCOMPARE(octet->font().pixelSize(), 17);
        QVERIFY(octet->font().fixedPitch());
    }
}

void TestLineAddress::onePointFontIsNotReduced()
{
    QWidget window;
    window.setFont(pointFont(1));
    const QLineAddress field(&window);
    QCOMPARE(field.m_pLineEdit[0]->font().pointSizeF(), 1.0);
}

void TestLineAddress::setFontIsTakenLiterally()
{
    QWidget window;
    QLineAddress field(&window);
    QFont given = pointFont(13);
    given.setItalic(true);
    field.setFont(given);
    for (const QLineEdit *octet : field.m_pLineEdit) {
        QCOMPARE(octet->font().pointSizeF(), 13.0);
        QVERIFY(octet->font().italic());
        QVERIFY(!octet->font().fixedPitch());
    }
    QCOMPARE(field.font().pointSizeF(), 13.0);
    QVERIFY(field.font().italic());
}

void TestLineAddress::setFontGoesFromLeftToRightThenFrame()
{
    QLineAddress field;
    field.setObjectName(QStringLiteral("frame"));
    FontOrder order;
    for (QLineEdit *octet : field.m_pLineEdit)
        octet->installEventFilter(&order);
    field.installEventFilter(&order);
    field.setFont(pointFont(21));
    QCOMPARE(order.names.join(QLatin1Char(' ')), QStringLiteral("octet0 octet1 octet2 octet3 frame"));
}

void TestLineAddress::styleSheetAboveDoesNotChangeTheFont()
{
    QWidget window;
    window.setFont(pointFont(12));
    window.setStyleSheet(QStringLiteral("QLineEdit { color: #ffffff; background: #1e1e1e; }"));
    QLineAddress field(&window);
    field.setFont(pointFont(11));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    for (const QLineEdit *octet : field.m_pLineEdit)
        QCOMPARE(QFontInfo(octet->font()).pointSizeF(), QFontInfo(pointFont(11)).pointSizeF());
}

void TestLineAddress::namesForStyleSheetAndTools()
{
    const QLineAddress field;
    for (int i = 0; i < QLineAddress::QTUTL_IP_SIZE; ++i) {
        const QString name = QStringLiteral("octet%1").arg(i);
        QCOMPARE(field.findChild<QLineEdit *>(name), field.m_pLineEdit[i]);
        QCOMPARE(field.m_pLineEdit[i]->accessibleName(), QStringLiteral("octet %1 of 4").arg(i + 1));
    }
}

void TestLineAddress::accessibleNamesFollowTheField()
{
    QLineAddress field;
    field.setAccessibleNames(QStringLiteral("100%2 source")); // no place holder of its own
    QCOMPARE(field.accessibleName(), QStringLiteral("100%2 source"));
    QCOMPARE(field.m_pLineEdit[0]->accessibleName(), QStringLiteral("100%2 source, octet 1 of 4"));
    QCOMPARE(field.m_pLineEdit[3]->accessibleName(), QStringLiteral("100%2 source, octet 4 of 4"));
    field.setAccessibleNames(QString());
    QCOMPARE(field.accessibleName(), QString());
    QCOMPARE(field.m_pLineEdit[3]->accessibleName(), QStringLiteral("octet 4 of 4"));
}

void TestLineAddress::onlyOctetsTakeFocus()
{
    AddressForm form;
    QVERIFY(form.show());
    const auto dots = form.field.findChildren<QLabel *>();
    QCOMPARE(dots.size(), 3);
    for (const QLabel *dot : dots)
        QCOMPARE(dot->focusPolicy(), Qt::NoFocus);

    form.before.setFocus();
    QList<int> stops;
    for (int i = 0; i < 5; ++i) {
        form.field.setAddress(QStringLiteral("11.22.33.44"));
        form.press(Qt::Key_Tab);
        stops << form.focused();
    }
    QCOMPARE(stops, (QList<int>{0, 1, 2, 3, -1}));
    QVERIFY(form.after.hasFocus());
}

void TestLineAddress::clickSelectsTheWholeOctet_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "0", "12", "255"})
        QTest::newRow(*text ? text : "empty") << QString::fromLatin1(text);
}

void TestLineAddress::clickSelectsTheWholeOctet()
{
    QFETCH(QString, text);
    AddressForm form;
    QVERIFY(form.show());
    form.octet(2)->setText(text);
    form.before.setFocus();
    QTest::mouseClick(form.octet(2), Qt::LeftButton);
    QCOMPARE(form.focused(), 2);
    QVERIFY(form.allSelected(2));
    QTest::mouseClick(form.octet(2), Qt::LeftButton); // and not only the first time
    QVERIFY(form.allSelected(2));
    QCoreApplication::processEvents();
    QCOMPARE(form.changed.count(), 0);
}

void TestLineAddress::dragSelectsTheWholeOctet()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(1)->setText(QStringLiteral("123"));
    const QPoint middle = form.octet(1)->rect().center();
    QTest::mousePress(form.octet(1), Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseMove(form.octet(1), middle + QPoint(3, 0));
    QTest::mouseRelease(form.octet(1), Qt::LeftButton, Qt::NoModifier, middle + QPoint(3, 0));
    QCOMPARE(form.octet(1)->selectedText(), QStringLiteral("123"));
}

void TestLineAddress::otherButtonSelectsNothing()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(1)->setText(QStringLiteral("123"));
    form.before.setFocus();
    QTest::mouseRelease(form.octet(1), Qt::RightButton);
    QTest::mouseRelease(form.octet(1), Qt::MiddleButton);
    QVERIFY(form.before.hasFocus());
    QVERIFY(!form.octet(1)->hasSelectedText());
}

void TestLineAddress::otherWidgetsAreNotTheFiltersBusiness()
{
    AddressForm form;
    QVERIFY(form.show());
    form.after.installEventFilter(&form.field);
    form.after.setFocus();
    form.press(Qt::Key_0);
    form.press(Qt::Key_Return);
    QCOMPARE(form.after.text(), QStringLiteral("0"));
    QVERIFY(form.after.hasFocus());
    form.before.setFocus();
    QCOMPARE(form.key.count() + form.changed.count() + form.left.count(), 0);
    QCOMPARE(form.field.address(), QStringLiteral("1.0.0.0"));
}

void TestLineAddress::filterNeverKeepsAnEvent()
{
    QLineAddress field;
    QLineEdit stranger;
    for (const int key :
         {int(Qt::Key_Backspace), int(Qt::Key_Left), int(Qt::Key_Right), int(Qt::Key_Period),
          int(Qt::Key_Comma), int(Qt::Key_0), int(Qt::Key_Return), int(Qt::Key_Enter), int(Qt::Key_5)}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QVERIFY(!field.eventFilter(field.m_pLineEdit[1], &press));
        QVERIFY(!field.eventFilter(&stranger, &press));
    }
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QVERIFY(!field.eventFilter(field.m_pLineEdit[1], &release));
    QFocusEvent out(QEvent::FocusOut);
    QVERIFY(!field.eventFilter(field.m_pLineEdit[1], &out));
}

void TestLineAddress::movingInsideIsNotLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.octet(1)->setFocus();
    form.press(Qt::Key_Tab);
    QCOMPARE(form.focused(), 2);
    form.press(Qt::Key_Period);
    form.press(Qt::Key_Left);
    form.press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(form.focused(), 1);
    QCOMPARE(form.left.count(), 0);
}

void TestLineAddress::tabOutLeavesOnce()
{
    AddressForm form;
    QVERIFY(form.show());
    form.field.setAddress(QStringLiteral("11.22.33.44"));
    form.octet(3)->setFocus();
    form.press(Qt::Key_Tab);
    QVERIFY(form.after.hasFocus());
    QCOMPARE(form.left.count(), 1);

    form.octet(0)->setFocus();
    form.press(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(form.before.hasFocus());
    QCOMPARE(form.left.count(), 2);
}

void TestLineAddress::clickOutsideLeavesOnce()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(1)->setFocus();
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      form.after.geometry().center());
    QVERIFY(form.after.hasFocus());
    QCOMPARE(form.left.count(), 1);
}

void TestLineAddress::clickIntoAnotherOctetIsNotLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(0)->setFocus();
    const QPoint there = form.octet(3)->mapTo(&form.window, form.octet(3)->rect().center());
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, Qt::NoModifier, there);
    QCOMPARE(form.focused(), 3);
    QVERIFY(form.allSelected(3));
    QCOMPARE(form.left.count(), 0);
}

void TestLineAddress::losingTheWindowIsLeaving()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(1)->setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(form.left.count(), 1);
}

void TestLineAddress::windowInFrontOfIt()
{
    AddressForm form;
    QVERIFY(form.show());
    form.octet(0)->setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QVERIFY(!form.octet(0)->hasFocus());
    form.octet(0)->selectAll();
    form.type(QStringLiteral("192168"));
    QCOMPARE(form.field.address(), QStringLiteral("192.168.0.0"));
    QCOMPARE(form.focused(), 2);
    form.type(QStringLiteral(">"));
    QCOMPARE(form.window.focusWidget(), &form.window);
}

void TestLineAddress::strangersAreNoOctets()
{
    AddressForm form;
    QVERIFY(form.show());
    form.before.setFocus();
    form.after.setText(QStringLiteral("0"));
    form.field.slotTextChanged(nullptr);
    form.field.slotTextChanged(&form.after);
    QCOMPARE(form.changed.count(), 0);
    QVERIFY(form.before.hasFocus());
}

void TestLineAddress::oneKeyOneChangeAfterTheLoop()
{
    AddressForm form;
    QVERIFY(form.show());
    form.put(0, QString(), 0);
    QTest::keyClick(form.octet(0), Qt::Key_7);
    QCOMPARE(form.key.count(), 1);
    QCOMPARE(form.key.first().first().value<QLineEdit *>(), form.octet(0));
    QCOMPARE(form.changed.count(), 0); // queued: only after the key took effect
    QCoreApplication::processEvents();
    QCOMPARE(form.changed.count(), 1);
    QCOMPARE(form.field.address(), QStringLiteral("7.0.0.0"));
}

void TestLineAddress::destroyedBeforeTheQueueRuns()
{
    QWidget window;
    auto *field = new QLineAddress(&window);
    int changes = 0;
    connect(field, &QLineAddress::addressChanged, &window, [&changes] { ++changes; });
    QTest::keyClicks(field->m_pLineEdit[0], QStringLiteral("19"));
    delete field;
    QCoreApplication::processEvents();
    QCOMPARE(changes, 0);
}

void TestLineAddress::destroyedWithTheFocus()
{
    QWidget window;
    auto *field = new QLineAddress(&window);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field->m_pLineEdit[2]->setFocus();
    QVERIFY(field->m_pLineEdit[2]->hasFocus());
    QTest::keyClick(field->m_pLineEdit[2], Qt::Key_0);
    const QPointer<QLineEdit> octet = field->m_pLineEdit[2];
    delete field;
    QCoreApplication::processEvents();
    QVERIFY(!octet);
    QVERIFY(!window.focusWidget());
}

void TestLineAddress::deletedLaterFromItsOwnSignal()
{
    QWidget window;
    const QPointer<QLineAddress> field = new QLineAddress(&window);
    connect(field, &QLineAddress::processReturn, field, &QObject::deleteLater);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field->m_pLineEdit[1]->setFocus();
    QTest::keyClick(field->m_pLineEdit[1], Qt::Key_Return);
    QTRY_VERIFY(!field);
}

QTEST_MAIN(TestLineAddress)
#include "test_lineaddress.moc"
