// SPDX-License-Identifier: MIT
//
// Slots, tips: tool tips that say what a click would do right now. They are made when somebody is about to
// read them.
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "channel/elementvalues.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QPushButton>

namespace {

class TipWatch : public QObject {
public:
    explicit TipWatch(QCorvelPrivate *d) : m_d(d) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::EnabledChange && watched == m_d->q->m_pCmdLoad)
            m_d->updateLoadTip();
        else if (event->type() == QEvent::ToolTip && watched == m_d->q->m_pCmdLoad)
            m_d->updateLoadTip(); // the override may have changed since
        else if (event->type() == QEvent::ToolTip)
            m_d->updateLockAllTip();
        return QObject::eventFilter(watched, event);
    }

private:
    QCorvelPrivate *m_d;
};

void setTip(QWidget *control, const QString &words)
{
    control->setToolTip(words);
    control->setAccessibleDescription(words);
}

QString loadTip(const QCorvel *q)
{
    if (q->m_pCmdLoad->isEnabled())
        return QCorvel::tr("Read settings or a session description from a file");
    const QString box = q->m_pNmosOverride->text();
    if (!q->m_pNmosOverride->isChecked())
        return QCorvel::tr("Files can be loaded only while NMOS is overridden: check \"%1\"").arg(box);
    return QCorvel::tr("Files can be loaded again when \"%1\" has been changed").arg(box);
}

bool isSame(const NetworkField &field, const QString &stored)
{
    return field.edit ? toDword(field.value()) == toDword(stored) : field.value() == stored;
}

struct Overwritten {
    int values = 0;
    int different = 0;
};

void countField(QCorvelPrivate *d, const NetworkField &field, Overwritten &count)
{
    for (const Element element : elementOrder()) {
        const int flows = element == Element::Audio ? kFlowCount : 1;
        for (int flow = 0; flow < flows; ++flow) {
            const QByteArray suffix = element == Element::Audio ? QByteArray::number(flow) : QByteArray();
            ++count.values;
            count.different +=
                !isSame(field, elementValue(element, field.side, field.field, d->channel(), suffix));
        }
    }
}

QString lockAllTip(QCorvelPrivate *d)
{
    const QCorvel *q = d->q;
    if (q->m_pCheckLockGroup->isChecked())
        return QCorvel::tr("Unlock all ten fields. No value changes");
    if (!QCorvel::isStandAlone())
        return QCorvel::tr(
            "Lock all ten fields.\nEach is sent to the engine for every element and audio flow");
    Overwritten count;
    for (const FieldStep &step : lockedCopyOrder())
        countField(d, d->networkField(step.side, step.field), count);
    return QCorvel::tr("Lock all ten fields.\nThe %1 addresses and ports shown are written to video, to each "
                       "audio flow\nand to ancillary data of %2: %3 values, of which %4 are different now "
                       "and are lost")
        .arg(lockedCopyOrder().size())
        .arg(q->m_pChannel->currentText())
        .arg(count.values)
        .arg(count.different);
}

} // namespace

void QCorvelPrivate::watchTips()
{
    auto *watch = new TipWatch(this);
    watches.emplace_back(watch);
    q->m_pCmdLoad->installEventFilter(watch);
    q->m_pCheckLockGroup->installEventFilter(watch);
    updateLoadTip();
}

void QCorvelPrivate::updateLoadTip()
{
    setTip(q->m_pCmdLoad, loadTip(q));
}

// Only when somebody is about to read it: it asks the store for every value that would be written.
void QCorvelPrivate::updateLockAllTip()
{
    setTip(q->m_pCheckLockGroup, lockAllTip(this));
}
