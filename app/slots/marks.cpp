// SPDX-License-Identifier: MIT
//
// Slots, marks: a field whose text is not what is stored bears a mark, and its tool tip says why and what is
// stored instead. The looks are the style sheet's.
#include "app/dialog/private.h"
#include "channel/interfacecheck.h"
#include "theme/invalidmark.h"
#include "theme/lineaddress.h"
#include "theme/portfield.h"

#include <QEvent>
#include <QLineEdit>

namespace {

// Why the text of a field is not what it looks like; empty when it is.
QString addressProblem(const QLineAddress *address)
{
    return address->isIncomplete() && isMarkedInvalid(address) ? QCorvel::tr("An octet is empty.")
                                                               : QString();
}

QString interfaceProblem(const QLineAddress *address)
{
    if (interfaceExistedLately(address->address()))
        return QString();
    return QCorvel::tr("This machine has no interface with the address %1.").arg(address->address());
}

// An address that is left out when the settings are set.
QString nodeProblem(const QLineAddress *address)
{
    return address->isIncomplete() ? addressProblem(address) : interfaceProblem(address);
}

QString domainProblem(const QString &text)
{
    bool isNumber = false;
    const uint domain = text.trimmed().toUInt(&isNumber, 10);
    if (isNumber && domain <= kHighestPtpDomain)
        return QString();
    return QCorvel::tr("\"%1\" is no PTP domain: those are 0 to %2.").arg(text).arg(kHighestPtpDomain);
}

QString fieldProblem(const NetworkField &field)
{
    if (field.edit)
        return portProblem(field.edit->text());
    const QString incomplete = addressProblem(field.address);
    if (field.field != Field::Interface || !incomplete.isEmpty())
        return incomplete;
    return interfaceProblem(field.address);
}

// Tells of every change of a field's text, and completes its tool tip before it is shown.
class MarkWatch : public QObject {
public:
    explicit MarkWatch(QCorvelPrivate *d) : m_d(d) {}

    void watch(QLineEdit *edit)
    {
        edit->installEventFilter(this);
        connect(edit, &QLineEdit::textChanged, this, [this] { m_d->markLater(); });
    }
    void watch(QLineAddress *address)
    {
        address->installEventFilter(this);
        for (const QLineEdit *octet : address->m_pLineEdit)
            connect(octet, &QLineEdit::textChanged, this, [this] { m_d->markLater(); });
        connect(address, &QLineAddress::processReturn, this, [this] { m_d->markLater(); });
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ToolTip && watched != m_d->q)
            m_d->tellStored(static_cast<QWidget *>(watched));
        else if (event->type() == QEvent::WindowActivate && watched == m_d->q)
            m_d->markLater(); // the machine may have got another interface
        return QObject::eventFilter(watched, event);
    }

private:
    QCorvelPrivate *m_d;
};

} // namespace

void QCorvelPrivate::watchMarks()
{
    auto *watch = new MarkWatch(this);
    watches.emplace_back(watch);
    q->installEventFilter(watch);
    for (const NetworkField &field : view.fields()) {
        if (field.address) {
            watch->watch(field.address);
        } else {
            watch->watch(field.edit);
            selectAllOnClick(field.edit);
            takeDrops(field.edit);
        }
    }
    watch->watch(q->m_pSimpleAddress);
    watch->watch(q->m_pLineNmosIp);
    watch->watch(q->m_pEditGmId);
    selectAllOnClick(q->m_pEditGmId);
    takeDrops(q->m_pEditGmId);
    takeDrops(q->m_pEditGmAddress);
    markFields();
}

// One load changes many octets; they are looked at once.
void QCorvelPrivate::markLater()
{
    if (marksDue)
        return;
    marksDue = true;
    QMetaObject::invokeMethod(
        q,
        [this] {
            marksDue = false;
            markFields();
        },
        Qt::QueuedConnection);
}

// Reads nothing of the store: this comes after every load.
void QCorvelPrivate::markFields()
{
    for (const NetworkField &field : view.fields()) {
        const QString problem = fieldProblem(field);
        if (field.edit)
            markInvalid(field.edit, !problem.isEmpty());
        else if (field.field == Field::Interface)
            field.address->setInvalid(!problem.isEmpty());
        field.control()->setToolTip(problem);
    }
    q->m_pSimpleAddress->setToolTip(addressProblem(q->m_pSimpleAddress));
    const QString node = nodeProblem(q->m_pLineNmosIp);
    q->m_pLineNmosIp->setInvalid(!node.isEmpty());
    q->m_pLineNmosIp->setToolTip(node);
    const QString problem = domainProblem(q->m_pEditGmId->text());
    markInvalid(q->m_pEditGmId, !problem.isEmpty());
    q->m_pEditGmId->setToolTip(problem.isEmpty() ? QCorvel::tr("PTP domain") : problem);
}

// Attached nothing is stored before the host says so.
void QCorvelPrivate::tellStored(QWidget *field)
{
    markFields();
    if (!QCorvel::isStandAlone() || !isMarkedInvalid(field))
        return;
    const QString value = storedIn(field);
    const QString words =
        value.isEmpty() ? QCorvel::tr("Nothing is stored") : QCorvel::tr("Stored is: %1").arg(value);
    field->setToolTip(field->toolTip() + QLatin1Char('\n') + words);
}
