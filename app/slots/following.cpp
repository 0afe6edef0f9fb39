// SPDX-License-Identifier: MIT
//
// Slots, following: what other programs write to the store is shown, and keys that were typed are stored
// where they were typed. What of it is asked for around a write stands in writing.cpp.
#include "app/dialog/private.h"
#include "app/view/combos.h"
#include "channel/channelstore.h"
#include "channel/configurations.h"
#include "channel/storehealth.h"
#include "theme/lineaddress.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStackedLayout>

#include <algorithm>

namespace {

// Whose shown state is the user's and not the store's: a field being typed in, a list that is open.
void holdWhatIsInHand(QCorvelPrivate *d)
{
    d->view.held().hold(fieldInHand(d->q));
    for (QComboBox *combo : d->q->findChildren<QComboBox *>()) {
        if (combo->view()->isVisible())
            d->view.held().hold(combo);
    }
}

void followLog(QCorvel *q)
{
    const bool on = globalDword(StorePath::Debug, MachineValue::NmosUseLog, q->bNmosUseLog) != 0;
    if (on == q->bNmosUseLog)
        return;
    const SignalBracket bracket(q);
    q->bNmosUseLog = on;
    q->m_pNmosOutLog->setChecked(on);
}

// Unless the user has begun to change them.
void followNodeSettings(QCorvel *q)
{
    if (!q->m_pNmosCfg->isVisible())
        return;
    const QList<QLineEdit *> edits = q->m_pNmosCfg->findChildren<QLineEdit *>();
    if (std::none_of(edits.begin(), edits.end(), [](const QLineEdit *edit) { return edit->isModified(); }))
        q->loadNmosCfg();
}

} // namespace

// ------------------------------------------------------------------------------------------------- watching

void QCorvelPrivate::watchStore()
{
    if (!QCorvel::isStandAlone() || !storeTellsNews())
        return;
    const QFileInfo file(storePath());
    watch.watch(file.path(), file.fileName());
    noteResult(storeObstacle(file.filePath()).isEmpty());
}

void QCorvelPrivate::noteStore()
{
    if (QCorvel::isStandAlone())
        noteResult(storeNews(&mark) != StoreNews::Unreadable);
}

void QCorvelPrivate::followStore()
{
    if (!watch.tick())
        return;
    if (watch.takeFolderTouched())
        listConfigs();
    const StoreNews news = storeNews(&mark);
    if (news == StoreNews::Others)
        takeOver();
    else if (news == StoreNews::Unreadable)
        noteResult(false);
}

QString QCorvelPrivate::shownConfiguration() const
{
    return q->m_pConfig ? q->m_pConfig->currentData().toString() : QString();
}

bool QCorvelPrivate::namesStore() const
{
    const QString inUse = configurationInUse();
    return inUse.isEmpty() || !q->m_pConfig || inUse == shownConfiguration();
}

// ------------------------------------------------------------------------------------------------ taking
// over

void QCorvelPrivate::takeOver()
{
    const SignalBracket bracket(q);
    const bool outermost = steps == 0;
    holdWhatIsInHand(this);
    takingOver = true;
    if (!namesStore())
        listConfigs();
    q->loadDataStandAlone();
    followLog(q);
    followNodeSettings(q);
    takingOver = false;
    view.held().putBack();
    if (outermost)
        view.held().release();
}

// Only what others changed: after "Save File" the box stays checked although the override has ended.
void QCorvelPrivate::followSwitches(quint32 value)
{
    const bool changed = value != nmosOverride;
    nmosOverride = value;
    if (!changed || !takingOver || view.held().contains(q->m_pNmosOverride))
        return;
    q->m_pNmosOverride->setChecked(value != 0);
    q->m_pSwapLayout->setCurrentIndex(value != 0 ? 0 : 1);
    q->m_pCmdLoad->setEnabled(value != 0);
}

// ------------------------------------------------------------------------------------------------------ keys

QCorvelPrivate::Place QCorvelPrivate::place() const
{
    return {view.place(), shownConfiguration()};
}

void QCorvelPrivate::go(const Place &place)
{
    const SignalBracket bracket(q);
    view.go(place.view);
    if (!q->m_pConfig)
        return;
    const QSignalBlocker blocker(q->m_pConfig);
    q->m_pConfig->setCurrentIndex(q->m_pConfig->findData(place.configuration));
}

// Keys belong to the place that they were typed in, so they are told of there, though the control that leads
// elsewhere has changed already.
void QCorvelPrivate::finishKeys()
{
    QList<QLineAddress *> waiting;
    for (QLineAddress *address : q->findChildren<QLineAddress *>()) {
        if (address->hasPendingKeys())
            waiting.append(address);
    }
    if (waiting.isEmpty())
        return;
    const Place chosen = place();
    go(shown);
    for (QLineAddress *address : waiting)
        address->finishKeys();
    go(chosen);
}

// A text that is still being typed counts as typed.
void QCorvelPrivate::finishPort()
{
    auto *edit = qobject_cast<QLineEdit *>(fieldInHand(q));
    if (edit)
        emit edit->editingFinished();
}
