// SPDX-License-Identifier: MIT
#include "app/view/signalwiring.h"

void SignalWiring::connectAll()
{
    m_depth = qMax(0, m_depth - 1);
    if (m_depth == 0)
        apply(true);
}

void SignalWiring::disconnectAll()
{
    if (m_depth++ == 0)
        apply(false);
}

void SignalWiring::apply(bool on)
{
    for (auto &link : m_links)
        link(on);
}
