// SPDX-License-Identifier: MIT
//
// The wheel over combo boxes: a closed one leaves it to what it stands in, an open list scrolls.
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWindow>
#include <qtestspontaneevent.h>

#include "theme/wheelguard.h"

namespace {

// One notch towards the user, given to the window as the window system does it.
void turnWheel(QWidget *over)
{
    const QPoint middle = over->rect().center();
    QWindow *window = over->window()->windowHandle();
    QWheelEvent event(over->mapTo(over->window(), middle), over->mapToGlobal(middle), QPoint(),
                      QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(window, &event); // sendEvent() would make it an event of the program's own again
}

struct Form {
    QScrollArea area;
    QComboBox *combo = new QComboBox;
    QComboBox *editable = new QComboBox;

    Form()
    {
        auto *page = new QWidget;
        page->setMinimumHeight(2000);
        auto *column = new QVBoxLayout(page);
        for (QComboBox *box : {combo, editable}) {
            for (int i = 0; i < 100; ++i)
                box->addItem(QString::number(i));
            box->setCurrentIndex(5);
            column->addWidget(box, 0, Qt::AlignTop);
        }
        column->addStretch(1);
        editable->setEditable(true);
        area.setWidget(page);
        area.setWidgetResizable(true);
        area.resize(200, 200);
    }

    bool show()
    {
        area.show();
        return QTest::qWaitForWindowActive(&area);
    }
};

} // namespace

class TestWheelGuard : public QObject {
    Q_OBJECT

private slots:
    void withoutGuardTheWheelChanges();
    void closedComboIgnoresTheWheel_data();
    void closedComboIgnoresTheWheel();
    void theFocusStays();
    void combosOfChildDialogsToo();
    void openListScrolls();
    void keysStillChange();
    void otherWidgetsKeepTheirWheel();
};

void TestWheelGuard::withoutGuardTheWheelChanges()
{
    Form form;
    QVERIFY(form.show());
    turnWheel(form.combo);
    QCOMPARE(form.combo->currentIndex(), 6); // or the cases below prove nothing
}

void TestWheelGuard::closedComboIgnoresTheWheel_data()
{
    QTest::addColumn<bool>("focus");
    QTest::addColumn<bool>("editable");
    QTest::newRow("without focus") << false << false;
    QTest::newRow("with focus") << true << false;
    QTest::newRow("editable without focus") << false << true;
    QTest::newRow("editable with focus") << true << true;
}

void TestWheelGuard::closedComboIgnoresTheWheel()
{
    QFETCH(bool, focus);
    QFETCH(bool, editable);
    Form form;
    guardCombosFromWheel(&form.area);
    QVERIFY(form.show());
    QComboBox *combo = editable ? form.editable : form.combo;
    if (focus)
        combo->setFocus();
    else
        form.area.setFocus();
    QSignalSpy changed(combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
    for (QWidget *over : {static_cast<QWidget *>(combo), static_cast<QWidget *>(combo->lineEdit())}) {
        if (!over)
            continue;
        form.area.verticalScrollBar()->setValue(0); // or the combo box would have gone out of sight
        turnWheel(over);
        QCOMPARE(combo->currentIndex(), 5);
        QCOMPARE(changed.count(), 0);
        QVERIFY(form.area.verticalScrollBar()->value() > 0); // it went on to the page
    }
}

// Or the next digit that is typed would choose an entry.
void TestWheelGuard::theFocusStays()
{
    Form form;
    guardCombosFromWheel(&form.area);
    QVERIFY(form.show());
    form.editable->setFocus();
    QTest::keyClicks(form.editable->lineEdit(), QStringLiteral("2"));
    turnWheel(form.combo);
    QVERIFY(form.editable->hasFocus());
    form.combo->setFocusPolicy(Qt::NoFocus);
    guardCombosFromWheel(&form.area);
    QCOMPARE(form.combo->focusPolicy(), Qt::NoFocus); // what takes no focus does not begin to
}

void TestWheelGuard::combosOfChildDialogsToo()
{
    QWidget window;
    QDialog child(&window);
    QComboBox combo(&child);
    combo.addItems({QStringLiteral("a"), QStringLiteral("b")});
    guardCombosFromWheel(&window);
    child.show();
    QVERIFY(QTest::qWaitForWindowExposed(&child));
    turnWheel(&combo);
    QCOMPARE(combo.currentIndex(), 0);
}

void TestWheelGuard::openListScrolls()
{
    Form form;
    guardCombosFromWheel(&form.area);
    QVERIFY(form.show());
    form.combo->setMaxVisibleItems(5);
    form.combo->showPopup();
    QTRY_VERIFY(form.combo->view()->isVisible());
    QScrollBar *bar = form.combo->view()->verticalScrollBar();
    const int before = bar->value();
    turnWheel(form.combo->view()->viewport());
    QTRY_VERIFY(bar->value() > before);
    QCOMPARE(form.combo->currentIndex(), 5);
    form.combo->hidePopup();
    turnWheel(form.combo);
    QCOMPARE(form.combo->currentIndex(), 5);
}

void TestWheelGuard::keysStillChange()
{
    Form form;
    guardCombosFromWheel(&form.area);
    QVERIFY(form.show());
    form.combo->setFocus();
    QTest::keyClick(form.combo, Qt::Key_Down);
    QCOMPARE(form.combo->currentIndex(), 6);
}

void TestWheelGuard::otherWidgetsKeepTheirWheel()
{
    QScrollBar bar;
    WheelGuard guard;
    bar.installEventFilter(&guard);
    bar.setRange(0, 100);
    bar.resize(10, 100);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    turnWheel(&bar);
    QVERIFY(bar.value() > 0);
}

QTEST_MAIN(TestWheelGuard)
#include "test_wheelguard.moc"
