// SPDX-License-Identifier: MIT
//
// Slots, history: taking changes of the store back and putting them back again, by menu and key, and the
// window with the last changes. Stand-alone only, and only with a library that keeps a history.
#include "app/dialog/private.h"
#include "app/view/historylist.h"
#include "channel/channelstore.h"
#include "channel/storehistory.h"
#include "ops/changewords.h"
#include "ops/place.h"

#include <QAction>
#include <QCoreApplication>
#include <QDateTime>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>

namespace {

constexpr int kTellSeconds = 10;
constexpr int kMenuChanges = 2000;  // looked at for the last step
constexpr int kListChanges = 20000; // looked at for the window
constexpr int kMostDetails = 20;
const QKeySequence kTakeBackKey(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);

std::optional<ops::Value> valueOf(const StoreChange::Value &value)
{
    switch (value.type) {
    case StoreChange::Value::Type::Absent:
        return std::nullopt;
    case StoreChange::Value::Type::Text:
        return ops::Value::ofText(value.text);
    case StoreChange::Value::Type::Number:
        return ops::Value::ofNumber(value.number);
    }
    Q_UNREACHABLE();
}

QString changeInWords(const StoreChange &change)
{
    return ops::changeInWords({change.path, change.name, valueOf(change.before), valueOf(change.after)});
}

// "Load File site.ipp", or the first change and how many more there are.
QString batchInWords(const StoreBatch &batch)
{
    if (!batch.head.label.isEmpty())
        return batch.head.label;
    const QString first = changeInWords(batch.changes.last()); // the newest comes first
    const int more = batch.changes.size() - 1;
    return more > 0 ? QCorvel::tr("%1 and %2 more").arg(first).arg(more) : first;
}

// Several keys in one field: from what was there before the first to what the last one made of it.
QString stepInWords(const QVector<StoreBatch> &step)
{
    StoreBatch whole = step.first();
    for (StoreChange &change : whole.changes) {
        for (const StoreChange &older : step.last().changes) {
            if (older.name == change.name)
                change.before = older.before;
        }
    }
    return batchInWords(whole);
}

QString detailsOf(const StoreBatch &batch)
{
    QStringList lines;
    for (auto change = batch.changes.crbegin(); change != batch.changes.crend(); ++change) {
        if (lines.size() == kMostDetails) {
            lines.append(QCorvel::tr("and %1 more").arg(batch.changes.size() - kMostDetails));
            break;
        }
        lines.append(changeInWords(*change));
    }
    return lines.join(QLatin1Char('\n'));
}

QVector<HistoryRow> historyRows()
{
    QVector<HistoryRow> rows;
    for (const StoreBatch &batch : storeBatches(kListChanges)) {
        HistoryRow row;
        row.batch = batch.head.batch;
        row.when = QDateTime::fromMSecsSinceEpoch(batch.head.timeUs / 1000)
                       .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        row.who = QStringLiteral("%1, %2 (%3)").arg(batch.head.user, batch.head.program).arg(batch.head.pid);
        row.what = batchInWords(batch);
        row.details = detailsOf(batch);
        row.isTakenBack = batch.isTakenBack;
        for (const StoreChange &change : batch.changes) {
            const int channel = ops::channelOfPath(change.path);
            if (channel >= 0)
                row.channels.insert(channel);
        }
        rows.append(row);
    }
    return rows;
}

// What a person meant by one command.
struct TakingBack {
    QString done;    // "Taken back"
    QString nothing; // "Nothing taken back"
    QString label;   // of the history
    QString what;
    QVector<qint64> batches; // newest first
};

TakingBack takingBack(const QVector<StoreBatch> &step)
{
    TakingBack plan{
        QCorvel::tr("Taken back: "), QCorvel::tr("Nothing taken back: "), QString(), stepInWords(step), {}};
    plan.label = QStringLiteral("take back #%1: %2").arg(step.first().head.batch).arg(plan.what);
    for (const StoreBatch &batch : step)
        plan.batches.append(batch.head.batch);
    return plan;
}

TakingBack puttingBack(const QVector<StoreBatch> &step)
{
    TakingBack plan = takingBack(step);
    plan.done = QCorvel::tr("Put back: ");
    plan.nothing = QCorvel::tr("Nothing put back: ");
    plan.label.replace(0, 4, QStringLiteral("put"));
    return plan;
}

// An address and a port take this key for typing that was undone. Here it is the dialog's.
class TakeBackKey : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::ShortcutOverride)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        if (QKeySequence(key->key() | static_cast<int>(key->modifiers())) != kTakeBackKey)
            return false;
        event->ignore();
        return true;
    }
};

// Returns the conflicts, nothing when it could not be done; changed is the number of batches that came of it.
std::optional<QVector<StoreChange>> carryOut(const TakingBack &plan, int *changed)
{
    QVector<StoreChange> conflicts;
    const auto note = [&conflicts](const StoreChange &conflict) {
        conflicts.append(conflict);
        return true;
    };
    for (const qint64 batch : plan.batches) {
        qint64 made = 0;
        labelNextBatch(plan.label);
        if (takeBatchBack(batch, false, false, note, &made) < 0)
            return std::nullopt;
        *changed += made != 0;
    }
    return conflicts;
}

QString conflictsInWords(const QVector<StoreChange> &conflicts)
{
    if (conflicts.isEmpty())
        return QString();
    const StoreChange &first = conflicts.first();
    return QCorvel::tr("; changed since by others and left alone: %1")
        .arg(ops::keysInWords(first.path, first.name, conflicts.size() - 1));
}

// All that one command takes back is one step: all of it, or nothing.
void takeBack(QCorvelPrivate *d, const TakingBack &plan)
{
    d->finishKeys();
    std::optional<QVector<StoreChange>> conflicts;
    int changed = 0;
    {
        UserStep step(d);
        d->write([&] { conflicts = carryOut(plan, &changed); });
        if (!conflicts)
            step.drop();
        else if (!step.keep())
            conflicts.reset();
    }
    d->q->loadData();
    if (conflicts)
        d->tell((changed ? plan.done : plan.nothing) + plan.what + conflictsInWords(*conflicts),
                kTellSeconds);
    else
        d->tell(plan.nothing + QCorvel::tr("the store could not do it"), kTellSeconds);
}

void takeLastBack(QCorvelPrivate *d)
{
    d->finishKeys(); // the last step may be theirs
    const QVector<StoreBatch> step = lastStep(storeBatches(kMenuChanges));
    if (step.isEmpty())
        d->tell(QCorvel::tr("There is nothing to take back"), kTellSeconds);
    else
        takeBack(d, takingBack(step));
}

void putLastBack(QCorvelPrivate *d)
{
    d->finishKeys();
    const QVector<StoreBatch> step = lastStepTakenBack(storeBatches(kMenuChanges));
    if (!step.isEmpty())
        takeBack(d, puttingBack(step));
}

void takeBatchOfListBack(QCorvelPrivate *d, qint64 id)
{
    for (const StoreBatch &batch : storeBatches(kListChanges)) {
        if (batch.head.batch == id)
            takeBack(d, takingBack({batch}));
    }
}

void showHistory(QCorvelPrivate *d)
{
    auto *list = d->q->findChild<QDialog *>(QStringLiteral("historyList"));
    if (!list)
        list = new HistoryList(d->q, historyRows, [d](qint64 batch) { takeBatchOfListBack(d, batch); });
    list->show();
    list->raise();
    list->activateWindow();
}

// In the empty area only: what can be focused has a menu of its own, or none.
bool isEmptyArea(const QWidget *dialog, const QPoint &at)
{
    const QWidget *child = dialog->childAt(at);
    return !child || child->focusPolicy() == Qt::NoFocus;
}

void showMenu(QCorvelPrivate *d, QAction *takeBackAction, const QPoint &at)
{
    if (!isEmptyArea(d->q, at))
        return;
    const QVector<StoreBatch> batches = storeBatches(kMenuChanges);
    const QVector<StoreBatch> step = lastStep(batches), takenBack = lastStepTakenBack(batches);
    QMenu *menu = new QMenu(d->q);
    menu->setObjectName(QStringLiteral("historyMenu"));
    takeBackAction->setText(step.isEmpty() ? QCorvel::tr("Take Back")
                                           : QCorvel::tr("Take Back: %1").arg(stepInWords(step)));
    takeBackAction->setEnabled(!step.isEmpty());
    menu->addAction(takeBackAction);
    QObject::connect(menu, &QMenu::aboutToHide, takeBackAction, [menu, takeBackAction] {
        takeBackAction->setEnabled(true); // its key looks for itself
        menu->deleteLater();
    });
    QAction *put = menu->addAction(QCorvel::tr("Put Back"));
    put->setEnabled(!takenBack.isEmpty());
    QObject::connect(put, &QAction::triggered, d->q, [d] { putLastBack(d); });
    menu->addSeparator();
    QObject::connect(menu->addAction(QCorvel::tr("History\u2026")), &QAction::triggered, d->q,
                     [d] { showHistory(d); });
    menu->popup(d->q->mapToGlobal(at));
}

} // namespace

// Another program's changes belong into an open list as well.
void QCorvelPrivate::refreshHistory()
{
    auto *list = static_cast<HistoryList *>(q->findChild<QDialog *>(QStringLiteral("historyList")));
    if (list && list->isVisible())
        list->refresh();
}

void QCorvelPrivate::connectHistory()
{
    if (!QCorvel::isStandAlone() || !storeHasHistory())
        return;
    QAction *action = new QAction(q);
    action->setShortcut(kTakeBackKey);
    q->addAction(action);
    QObject::connect(action, &QAction::triggered, q, [this] { takeLastBack(this); });
    auto *key = new TakeBackKey(q);
    for (QLineEdit *edit : q->findChildren<QLineEdit *>()) {
        if (edit->window() == q)
            edit->installEventFilter(key);
    }
    q->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(q, &QWidget::customContextMenuRequested, q,
                     [this, action](const QPoint &at) { showMenu(this, action, at); });
}
