// SPDX-License-Identifier: MIT
//
// Slots, following: what other programs write to the store is shown. What of it is asked for
// around a write stands in writing.cpp.
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

#include <initializer_list>

namespace {

// Whose shown state is the user's and not the store's: a field being typed in, a list that is open, a setting
// of the node that waits for "Set".
void holdWhatIsInHand(QCorvelPrivate *d)
{
    QCorvel *const q = d->q;
    d->view.held().hold(fieldInHand(q));
    if (q->m_pNmosCfg->isVisible()) {
        for (QObject *setting : std::initializer_list<QObject *>{q->m_pEditNmosDmn, q->m_pLineNmosIp,
                                                                 q->m_pLineNmosSrv, q->m_pEditNmosPort})
            d->view.held().hold(setting);
    }
    for (QComboBox *combo : q->findChildren<QComboBox *>()) {
        if (combo->view()->isVisible())
            d->view.held().hold(combo);
    }
}

} // namespace

// ------------------------------------------------------------------------------------------------- watching

void QCorvelPrivate::watchStore()
{
    if (!QCorvel::isStandAlone() || !storeTellsNews())
        return;
    const QFileInfo file(storePath());
    storeWatch.watch(file.path(), file.fileName());
    noteResult(storeObstacle(file.filePath()).isEmpty());
    showFleet();
}

void QCorvelPrivate::noteStore()
{
    if (QCorvel::isStandAlone())
        noteResult(storeNews(&mark) != StoreNews::Unreadable);
}

void QCorvelPrivate::followStore()
{
    if (fileWorkRuns || !storeWatch.tick())
        return;
    if (storeWatch.takeFolderTouched()) {
        listConfigs();
        showFleet();
    }
    const StoreNews news = storeNews(&mark);
    if (news == StoreNews::Others) {
        takeOver();
        refreshHistory();
    } else if (news == StoreNews::Unreadable)
        noteResult(false);
}

// One entry for each configuration on disk. The one in use is always there and selected.
void QCorvel::findConfigs()
{
    QString inUse;
    const QStringList names = configurations(&inUse);
    for (const QString &name : names)
        m_pConfig->addItem(name, name);
    m_pConfig->setCurrentIndex(m_pConfig->findData(inUse));
}

// Nothing is loaded here.
void QCorvelPrivate::listConfigs()
{
    if (!q->m_pConfig)
        return;
    QStringList listed;
    for (int i = 0; i < q->m_pConfig->count(); ++i)
        listed.append(q->m_pConfig->itemText(i));
    if (namesStore() && (q->m_pConfig->view()->isVisible() || listed == configurations()))
        return;
    const QSignalBlocker blocker(q->m_pConfig);
    q->m_pConfig->clear();
    q->findConfigs();
    watchStore();
}

// ---------------------------------------------------------------------------------------------- taking over

// What belongs to no channel. A load does not show it.
void QCorvelPrivate::followNode()
{
    if (q->m_pNmosCfg->isVisible())
        q->loadNmosCfg();
    const bool on = globalDword(StorePath::Debug, MachineValue::NmosUseLog, 0) != 0;
    if (on == q->bNmosUseLog)
        return;
    const SignalBracket bracket(q);
    q->bNmosUseLog = on;
    q->m_pNmosOutLog->setChecked(on);
}

// While nothing can be read, what is shown is the last that is known of the configuration.
void QCorvelPrivate::takeOver()
{
    quint64 anyMark = 0;
    if (namesStore() && storeNews(&anyMark) == StoreNews::Unreadable)
        return;
    const SignalBracket bracket(q);
    const bool outermost = steps == 0;
    holdWhatIsInHand(this);
    takingOver = true;
    if (!namesStore())
        listConfigs();
    q->loadDataStandAlone();
    followNode();
    takingOver = false;
    view.held().putBack();
    if (outermost)
        view.held().release();
}
