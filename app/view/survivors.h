// SPDX-License-Identifier: MIT
//
// View: what keeps a dialog's controls alive that is deleted while one of them is on the call stack. A slot
// that runs a box does not return before the box is answered; whoever deletes the dialog meanwhile would
// leave the control whose signal called the slot to run on in freed memory.
#ifndef CORVEL_VIEW_SURVIVORS_H
#define CORVEL_VIEW_SURVIVORS_H

#include <QPointer>
#include <QVector>
#include <QWidget>

#include <memory>

class Survivors {
public:
    // Lives around a box's event loop. When the outermost one ends, the survivors are deleted as soon as the
    // event loop outside of it runs.
    class Loop {
    public:
        explicit Loop(const std::shared_ptr<Survivors> &survivors);
        ~Loop();
        Loop(const Loop &) = delete;
        Loop &operator=(const Loop &) = delete;

    private:
        const std::shared_ptr<Survivors> m_survivors; // longer than the dialog
    };

    // To be called at the start of the dialog's destructor: takes over its child widgets, but for windows,
    // while a loop runs. Else the dialog deletes them itself as ever.
    void takeOver(QWidget *dialog);

private:
    int m_loops = 0;
    QVector<QPointer<QWidget>> m_widgets;
};

#endif
