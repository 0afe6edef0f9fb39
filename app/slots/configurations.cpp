// SPDX-License-Identifier: MIT
//
// Slots, configurations: the named configurations of the store and the switch between them.
#include "app/corvel.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QSignalBlocker>

namespace {

constexpr int kPathBytes = 4096;
constexpr char kConfigSuffix[] = ".rkcfg"; // one database file per named configuration

QString defaultConfig()
{
    char name[256] = {};
    rkCFGGetDefaultName(name, sizeof name);
    return QString::fromUtf8(name);
}

} // namespace

// One entry for each configuration on disk. The one in use is always there and selected.
void QCorvel::findConfigs()
{
    char folder[kPathBytes] = {};
    rkOSGetConfigDir(folder);
    const QString inUse = defaultConfig();
    const QString suffix = QLatin1String(kConfigSuffix);
    QStringList names;
    const QDir dir(QString::fromUtf8(folder));
    for (const QString &file : dir.entryList({QLatin1Char('*') + suffix}, QDir::Files, QDir::Name))
        names.append(file.left(file.size() - suffix.size()));
    if (!inUse.isEmpty() && !names.contains(inUse))
        names.prepend(inUse);
    for (const QString &name : qAsConst(names))
        m_pConfig->addItem(name, name);
    m_pConfig->setCurrentIndex(m_pConfig->findData(inUse));
}

void QCorvel::onSetConfig()
{
    if (!m_pConfig)
        return;
    const QByteArray name = m_pConfig->currentData().toString().toUtf8();
    rkCFGClose(reinterpret_cast<void *>(static_cast<intptr_t>(-1)), 1);
    rkCFGSetDefaultName(name.constData());
    loadData();
}

// Another program may have switched the configuration. Edits go to the one in use, so that is the one to
// be shown; looked after when the window comes to the front.
void QCorvel::followConfig()
{
    if (!m_pConfig)
        return;
    const QString inUse = defaultConfig();
    if (inUse.isEmpty() || inUse == m_pConfig->currentData().toString())
        return;
    {
        const QSignalBlocker blocker(m_pConfig);
        m_pConfig->clear();
        findConfigs();
    }
    loadData();
}

void QCorvel::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        followConfig();
}
