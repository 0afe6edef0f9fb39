// SPDX-License-Identifier: MIT
//
// View: the eight flow selectors.
#include "app/corvel.h"
#include "app/dialog/private.h"

#include <QComboBox>
#include <QRadioButton>

namespace {

constexpr int kLastFlow = kFlowCount - 1;

} // namespace

// In single-flow mode no flow can be selected.
void QCorvelPrivate::enableFlowSelectors()
{
    const quint32 flows = singleFlow ? 0 : comboData(q->m_pComboAudFlow);
    for (quint32 flow = 0; flow < kFlowCount; ++flow)
        q->m_pAudFlowSelect[flow]->setEnabled(flow < flows);
}

// In single-flow mode the selectors do not exclude each other, so the others are unchecked by hand.
void QCorvelPrivate::selectOnlyFlow(QRadioButton *flow)
{
    flow->setChecked(true);
    for (QRadioButton *other : q->m_pAudFlowSelect)
        other->setChecked(other == flow);
}

// The first checked flow. With none, flow 0 is chosen, except in single-flow mode, whose values carry no
// number.
QByteArray QCorvelPrivate::loadFlowSuffix()
{
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (q->m_pAudFlowSelect[flow]->isChecked())
            return QByteArray::number(flow);
    }
    if (singleFlow || keepNoFlow)
        return QByteArray();
    q->m_pAudFlowSelect[0]->setChecked(true);
    return QByteArrayLiteral("0");
}

// The last checked flow, on purpose the other way round than in loading; none in single-flow mode.
QByteArray QCorvelPrivate::saveFlowSuffix() const
{
    for (int flow = kLastFlow; flow >= 0; --flow) {
        if (q->m_pAudFlowSelect[flow]->isChecked())
            return QByteArray::number(flow);
    }
    return QByteArray();
}

// The first checked flow, flow 0 when none is.
int QCorvelPrivate::engineFlow() const
{
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (q->m_pAudFlowSelect[flow]->isChecked())
            return flow;
    }
    return 0;
}
