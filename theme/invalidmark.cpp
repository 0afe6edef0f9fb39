// SPDX-License-Identifier: MIT
#include "theme/invalidmark.h"

#include <QStyle>
#include <QVariant>
#include <QWidget>

namespace {

const char kMarkName[] = "invalid";

} // namespace

void markInvalid(QWidget *field, bool invalid)
{
    if (isMarkedInvalid(field) == invalid)
        return;
    field->setProperty(kMarkName, invalid);
    // A style sheet looks at properties only when a widget is polished.
    field->style()->unpolish(field);
    field->style()->polish(field);
    field->update();
}

bool isMarkedInvalid(const QWidget *field)
{
    return field->property(kMarkName).toBool();
}
