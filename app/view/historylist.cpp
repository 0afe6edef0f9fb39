// SPDX-License-Identifier: MIT
#include "app/view/historylist.h"

#include "theme/wheelguard.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kAllChannels = -1;

QString tr(const char *text)
{
    return QCoreApplication::translate("QCorvel", text);
}

QTableWidgetItem *newCell(const QString &text, const HistoryRow &row)
{
    QTableWidgetItem *cell = new QTableWidgetItem(text);
    cell->setData(Qt::UserRole, row.batch);
    cell->setToolTip(row.details);
    QFont font = cell->font();
    font.setStrikeOut(row.isTakenBack);
    cell->setFont(font);
    return cell;
}

QTableWidget *newTable(QWidget *owner)
{
    QTableWidget *table = new QTableWidget(0, 3, owner);
    table->setObjectName(QStringLiteral("historyTable"));
    table->setHorizontalHeaderLabels({tr("When"), tr("Who"), tr("What")});
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter); // as the texts below
    table->setAccessibleName(tr("The last changes"));
    return table;
}

// As large as those of the dialog are, and without the style's pictures, which are drawn for a light ground.
void fitButtons(const QDialogButtonBox *box)
{
    const QFontMetrics font = box->fontMetrics();
    for (QAbstractButton *button : box->buttons()) {
        button->setIcon(QIcon());
        button->setMinimumSize(font.averageCharWidth() * 14, font.height() * 17 / 10);
    }
}

} // namespace

HistoryList::HistoryList(QWidget *owner, Rows rows, TakeBack takeBack)
    : QDialog(owner), m_source(std::move(rows)), m_takeBack(std::move(takeBack)),
      m_channel(new QComboBox(this)), m_table(newTable(this)),
      m_button(new QPushButton(tr("Take Back"), this))
{
    setObjectName(QStringLiteral("historyList"));
    setWindowTitle(tr("History"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_channel->setObjectName(QStringLiteral("historyChannel"));
    m_channel->setAccessibleName(tr("Channel"));
    m_button->setObjectName(QStringLiteral("historyTakeBack"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_button, QDialogButtonBox::ActionRole);
    // Return in a field of the owner would press a default button in here.
    for (QPushButton *button : findChildren<QPushButton *>())
        button->setAutoDefault(false);
    fitButtons(buttons);
    m_channel->setMinimumHeight(fontMetrics().height() * 17 / 10);
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_channel);
    column->addWidget(m_table);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_button, &QPushButton::clicked, this, &HistoryList::takeBackChosen);
    connect(m_channel, qOverload<int>(&QComboBox::currentIndexChanged), this, &HistoryList::fillTable);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &HistoryList::updateButton);
    guardCombosFromWheel(this);
    refresh();
    m_table->resizeColumnsToContents();
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 26);
}

void HistoryList::refresh()
{
    const qint64 chosen = chosenBatch();
    m_rows = m_source();
    fillChannels();
    fillTable();
    chooseBatch(chosen);
}

// Other programs write as well: what there is is asked for whenever somebody looks.
void HistoryList::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refresh();
}

void HistoryList::fillChannels()
{
    const QSignalBlocker blocker(m_channel);
    const int chosen = m_channel->count() ? m_channel->currentData().toInt() : kAllChannels;
    QSet<int> channels;
    for (const HistoryRow &row : m_rows)
        channels += row.channels;
    QList<int> sorted = channels.values();
    std::sort(sorted.begin(), sorted.end());
    m_channel->clear();
    m_channel->addItem(tr("All channels"), kAllChannels);
    for (const int channel : sorted)
        m_channel->addItem(tr("Channel %1").arg(channel), channel);
    m_channel->setCurrentIndex(qMax(0, m_channel->findData(chosen)));
}

void HistoryList::fillTable()
{
    const int channel = m_channel->currentData().toInt();
    m_table->setRowCount(0);
    for (const HistoryRow &row : m_rows) {
        if (channel != kAllChannels && !row.channels.contains(channel))
            continue;
        const int at = m_table->rowCount();
        m_table->insertRow(at);
        m_table->setItem(at, 0, newCell(row.when, row));
        m_table->setItem(at, 1, newCell(row.who, row));
        m_table->setItem(at, 2, newCell(row.what, row));
    }
    updateButton();
}

void HistoryList::chooseBatch(qint64 batch)
{
    for (int at = 0; at < m_table->rowCount(); ++at) {
        if (m_table->item(at, 0)->data(Qt::UserRole).toLongLong() == batch)
            m_table->selectRow(at);
    }
}

// 0: none.
qint64 HistoryList::chosenBatch() const
{
    const QList<QTableWidgetItem *> chosen = m_table->selectedItems();
    return chosen.isEmpty() ? 0 : chosen.first()->data(Qt::UserRole).toLongLong();
}

void HistoryList::updateButton()
{
    const qint64 batch = chosenBatch();
    m_button->setEnabled(std::any_of(m_rows.begin(), m_rows.end(), [batch](const HistoryRow &row) {
        return row.batch == batch && !row.isTakenBack;
    }));
}

// The question runs no event loop of its own, so the owner may go away under it.
void HistoryList::takeBackChosen()
{
    const qint64 batch = chosenBatch();
    const auto takeBack = [this, batch] {
        m_takeBack(batch);
        refresh();
    };
    if (m_rows.isEmpty() || batch == m_rows.first().batch) {
        takeBack();
        return;
    }
    auto *box = new QMessageBox(QMessageBox::Question, windowTitle(),
                                tr("This is not the last change. Take it back all the same? What was changed "
                                   "since stays as it is."),
                                QMessageBox::Yes | QMessageBox::No, this);
    box->setObjectName(QStringLiteral("historyQuestion"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QDialog::finished, this, [takeBack](int answer) {
        if (answer == QMessageBox::Yes)
            takeBack();
    });
    box->open();
}
