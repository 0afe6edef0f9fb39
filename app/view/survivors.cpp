// SPDX-License-Identifier: MIT
#include "app/view/survivors.h"

Survivors::Loop::Loop(const std::shared_ptr<Survivors> &survivors) : m_survivors(survivors)
{
    ++m_survivors->m_loops;
}

Survivors::Loop::~Loop()
{
    if (--m_survivors->m_loops > 0)
        return;
    for (const QPointer<QWidget> &widget : m_survivors->m_widgets) {
        if (widget)
            widget->deleteLater();
    }
    m_survivors->m_widgets.clear();
}

void Survivors::takeOver(QWidget *dialog)
{
    if (m_loops == 0)
        return;
    for (QWidget *child : dialog->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child->isWindow())
            continue;
        child->setParent(nullptr);
        m_widgets.append(child);
    }
}
