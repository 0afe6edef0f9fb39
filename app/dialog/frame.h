// SPDX-License-Identifier: MIT
//
// What only the dialog's own files may set: its mode and its scale. One process shows one kind of dialog at
// one scale, so both are process-wide; QCorvel::isStandAlone and QCorvel::fontFactor tell them.
#ifndef CORVEL_DIALOG_FRAME_H
#define CORVEL_DIALOG_FRAME_H

class QWidget;

void setStandAlone(bool on);
void setFontFactor(double factor);

// The vertical resolution of the widget's screen (before it has a window: the primary one) over 96 dpi.
double scaleOf(const QWidget *widget);

#endif
