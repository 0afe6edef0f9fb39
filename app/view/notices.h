// SPDX-License-Identifier: MIT
//
// What the dialog has to say beside its page: a bar for what is wrong for as long as it is wrong, and a
// line for what happened or is worth knowing. Both lie over the dialog and stand in no layout, so nothing
// moves when they come and go, and the mouse goes through them. Time is counted in ticks of the owner's
// timer.
#ifndef CORVEL_VIEW_NOTICES_H
#define CORVEL_VIEW_NOTICES_H

#include <QRect>
#include <QString>

class QFont;
class QLabel;
class QWidget;

class Notices {
public:
    // Makes both, hidden, as children of the owner: object names "storeBar" and "statusLine".
    void make(QWidget *owner, const QFont &font);
    // Each is as high as its text needs, and at least as high as here: the bar grows down, the line up.
    void place(const QRect &bar, const QRect &line);

    // Shown until it is set to the empty text.
    void setBar(const QString &text);
    // Shown whenever nothing else is told, until it is set to the empty text.
    void setStanding(const QString &text);
    // Shown for that many ticks in place of the standing text. A later one replaces an earlier one.
    void tell(const QString &text, int ticks);
    void tick();

    QString bar() const { return m_barText; }
    QString standing() const { return m_standing; }

private:
    void fitBar();
    void fitLine();
    void showLine(const QString &text);

    QRect m_barPlace, m_linePlace;
    QLabel *m_bar = nullptr;
    QLabel *m_line = nullptr;
    QString m_barText, m_standing;
    int m_ticksLeft = 0;
};

#endif
