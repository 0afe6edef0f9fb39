// SPDX-License-Identifier: MIT
#include "app/view/audioflows.h"

#include <QRadioButton>

#include <algorithm>

namespace {

bool isChecked(const QRadioButton *button)
{
    return button->isChecked();
}

QByteArray suffix(int flow)
{
    return flow < 0 ? QByteArray() : QByteArray::number(flow);
}

} // namespace

void AudioFlows::enable(quint32 flows) const
{
    const quint32 enabled = m_single ? 0 : flows;
    for (quint32 flow = 0; flow < kFlowCount; ++flow)
        m_buttons[flow]->setEnabled(flow < enabled);
}

void AudioFlows::disablePast(quint32 flows) const
{
    if (flows >= kFlowCount) // a damaged store may name any number
        return;
    for (quint32 flow = flows + 1; flow < kFlowCount; ++flow)
        m_buttons[flow]->setEnabled(false);
}

void AudioFlows::selectOnly(int flow) const
{
    QRadioButton *const chosen = m_buttons[static_cast<std::size_t>(flow)];
    chosen->setChecked(true);
    for (QRadioButton *button : m_buttons)
        button->setChecked(button == chosen);
}

void AudioFlows::clear() const
{
    for (QRadioButton *button : m_buttons) {
        button->setAutoExclusive(false); // the checked button of an exclusive set cannot be unchecked
        button->setChecked(false);
        button->setAutoExclusive(!m_single);
        button->setEnabled(!m_single);
    }
}

quint32 AudioFlows::checked() const
{
    quint32 flows = 0;
    for (std::size_t flow = 0; flow < m_buttons.size(); ++flow)
        flows |= m_buttons[flow]->isChecked() ? 1u << flow : 0;
    return flows;
}

// None checked is a state too, which the buttons would not take while they exclude each other.
void AudioFlows::setChecked(quint32 flows) const
{
    const auto setExclusive = [this](bool on) {
        for (QRadioButton *button : m_buttons)
            button->setAutoExclusive(on);
    };
    const bool exclusive = m_buttons[0]->autoExclusive();
    setExclusive(false);
    for (std::size_t flow = 0; flow < m_buttons.size(); ++flow)
        m_buttons[flow]->setChecked((flows >> flow & 1) != 0);
    setExclusive(exclusive);
}

int AudioFlows::first() const
{
    const auto found = std::find_if(m_buttons.begin(), m_buttons.end(), isChecked);
    return found == m_buttons.end() ? -1 : static_cast<int>(found - m_buttons.begin());
}

int AudioFlows::last() const
{
    const auto found = std::find_if(m_buttons.rbegin(), m_buttons.rend(), isChecked);
    return static_cast<int>(m_buttons.rend() - found) - 1;
}

QByteArray AudioFlows::loadSuffix() const
{
    const int flow = first();
    if (flow >= 0 || m_single || m_keepNone)
        return suffix(flow);
    m_buttons[0]->setChecked(true);
    return suffix(0);
}

QByteArray AudioFlows::saveSuffix() const
{
    return suffix(last());
}
