// SPDX-License-Identifier: MIT
//
// The window with the last changes: a table, newest first, a choice of the channel, and a button that takes
// the chosen change back. It asks first when the change is not the last one. Where the rows come from and
// what taking back means is the owner's.
#ifndef CORVEL_VIEW_HISTORYLIST_H
#define CORVEL_VIEW_HISTORYLIST_H

#include <QDialog>
#include <QSet>
#include <QString>
#include <QVector>

#include <functional>

class QComboBox;
class QPushButton;
class QTableWidget;

struct HistoryRow {
    qint64 batch = 0;
    QString when, who, what;
    QString details; // every change of the batch, one a line
    QSet<int> channels;
    bool isTakenBack = false;
};

class HistoryList : public QDialog {
public:
    using Rows = std::function<QVector<HistoryRow>()>;
    using TakeBack = std::function<void(qint64 batch)>;

    // Goes with the owner, and by itself when it is closed.
    HistoryList(QWidget *owner, Rows rows, TakeBack takeBack);

    // Asks for the rows anew; the chosen change stays chosen.
    void refresh();

protected:
    void changeEvent(QEvent *event) override;

private:
    void fillChannels();
    void fillTable();
    void chooseBatch(qint64 batch);
    qint64 chosenBatch() const;
    void takeBackChosen();
    void updateButton();

    Rows m_source;
    TakeBack m_takeBack;
    QVector<HistoryRow> m_rows;
    QComboBox *m_channel;
    QTableWidget *m_table;
    QPushButton *m_button;
};

#endif
