// SPDX-License-Identifier: MIT
//
// Controls that outlive their dialog while an event loop runs inside one of their signals.
#include "app/view/survivors.h"

#include <QDialog>
#include <QEventLoop>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

class TestSurvivors : public QObject {
    Q_OBJECT

private slots:
    void withoutALoopNothingSurvives();
    void childrenSurviveTheLoop();
    void nestedLoopsEndTogether();
    void windowsGoWithTheDialog();
};

namespace {

// A dialog as it should be destroyed.
struct Dialog {
    std::shared_ptr<Survivors> survivors = std::make_shared<Survivors>();
    QDialog *dialog = new QDialog;
    QPointer<QPushButton> button = new QPushButton(dialog);
    QPointer<QDialog> window = new QDialog(dialog);

    void destroy()
    {
        survivors->takeOver(dialog);
        delete dialog;
        dialog = nullptr;
    }
};

void deleteWhatIsDue()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void TestSurvivors::withoutALoopNothingSurvives()
{
    Dialog one;
    one.destroy();
    QVERIFY(!one.button);
}

// Also not by the inner event loop, which goes on for a moment.
void TestSurvivors::childrenSurviveTheLoop()
{
    Dialog one;
    {
        const Survivors::Loop loop(one.survivors);
        QEventLoop inner;
        QTimer::singleShot(0, &inner, [&] {
            one.destroy();
            QTimer::singleShot(0, &inner, &QEventLoop::quit);
        });
        inner.exec();
        deleteWhatIsDue();
        QVERIFY(one.button);
        QVERIFY(!one.button->isVisible() && !one.button->parent());
    }
    QVERIFY(one.button);
    deleteWhatIsDue();
    QVERIFY(!one.button);
}

void TestSurvivors::nestedLoopsEndTogether()
{
    Dialog one;
    {
        const Survivors::Loop outer(one.survivors);
        {
            const Survivors::Loop inner(one.survivors);
            one.destroy();
        }
        deleteWhatIsDue();
        QVERIFY(one.button);
    }
    deleteWhatIsDue();
    QVERIFY(!one.button);
}

void TestSurvivors::windowsGoWithTheDialog()
{
    Dialog one;
    const Survivors::Loop loop(one.survivors);
    one.destroy();
    QVERIFY(one.button);
    QVERIFY(!one.window);
}

QTEST_MAIN(TestSurvivors)
#include "test_survivors.moc"
