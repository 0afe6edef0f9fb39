// SPDX-License-Identifier: MIT
//
// The stand-alone program's font, style and palette. They reach what the dialog's own style sheet does
// not: the file dialogs, which have no parent window. An embedded dialog leaves its host's alone.
#ifndef CORVEL_APPEARANCE_H
#define CORVEL_APPEARANCE_H

class QApplication;

void useCorvelAppearance(QApplication &application);

#endif
