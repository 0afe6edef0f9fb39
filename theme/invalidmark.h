// SPDX-License-Identifier: MIT
//
// The mark of a field whose text is not what is stored: dynamic property "invalid", which the style
// sheet shows as a red edge.
#ifndef CORVEL_INVALIDMARK_H
#define CORVEL_INVALIDMARK_H

class QWidget;

// Sets or takes away the mark. Costs nothing when the field is marked so already; else the field itself
// is styled anew, its children are not.
void markInvalid(QWidget *field, bool invalid);

// True while the field bears the mark.
bool isMarkedInvalid(const QWidget *field);

#endif
