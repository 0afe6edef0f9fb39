// SPDX-License-Identifier: MIT
#include "app/view/heldcontrols.h"

#include "theme/lineaddress.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>

#include <algorithm>

namespace {

// Null for text fields: those are left alone, so there is nothing to put back.
QVariant shownBy(const QObject *control)
{
    if (const auto *combo = qobject_cast<const QComboBox *>(control))
        return combo->currentIndex();
    if (const auto *button = qobject_cast<const QAbstractButton *>(control))
        return button->isChecked();
    return {};
}

void showIn(QObject *control, const QVariant &value)
{
    if (auto *combo = qobject_cast<QComboBox *>(control))
        combo->setCurrentIndex(value.toInt());
    else if (auto *button = qobject_cast<QAbstractButton *>(control))
        button->setChecked(value.toBool());
}

QLineAddress *addressOf(const QLineEdit *edit)
{
    return edit ? qobject_cast<QLineAddress *>(edit->parentWidget()) : nullptr;
}

// Left or finished without having been changed, a text field has nothing of the user's.
bool isUntouched(const QObject *control)
{
    if (const auto *edit = qobject_cast<const QLineEdit *>(control))
        return !edit->isModified();
    const auto *address = qobject_cast<const QLineAddress *>(control);
    return address && !address->isModified();
}

} // namespace

void HeldControls::hold(QObject *control)
{
    if (control && !contains(control) && !isUntouched(control))
        m_rows.append({control, shownBy(control)});
}

bool HeldControls::contains(const QObject *control) const
{
    return std::any_of(m_rows.begin(), m_rows.end(),
                       [control](const Row &row) { return row.control == control; });
}

void HeldControls::putBack() const
{
    for (const Row &row : m_rows)
        showIn(row.control, row.value);
}

QWidget *fieldInHand(const QWidget *window)
{
    auto *edit = qobject_cast<QLineEdit *>(window->focusWidget());
    if (!edit)
        return nullptr;
    QLineAddress *const address = addressOf(edit);
    QWidget *const field = address ? static_cast<QWidget *>(address) : edit;
    return isUntouched(field) ? nullptr : field;
}

void settleFields(const QWidget *window)
{
    const QLineAddress *inHand = addressOf(qobject_cast<QLineEdit *>(window->focusWidget()));
    for (QLineEdit *edit : window->findChildren<QLineEdit *>()) {
        const bool isElsewhere = edit->window() != window->window(); // a dialog of the window's own
        if (!isElsewhere && (!inHand || addressOf(edit) != inHand))
            edit->setModified(false);
    }
}
