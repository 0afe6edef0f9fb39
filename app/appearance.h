// SPDX-License-Identifier: MIT
//
// The stand-alone program's font, style, palette and icon. They reach what the dialog's own style sheet does
// not: the file dialogs, which have no parent window. An embedded dialog leaves its host's alone.
#ifndef CORVEL_APPEARANCE_H
#define CORVEL_APPEARANCE_H

class QApplication;

// True when the toolkit's own option "-style" is among the arguments. Ask before the application object
// is made: it takes its options out.
bool choosesStyle(int argc, char **argv);

// ownStyle false leaves the style that the user chose; font, palette, icon and desktop entry are ours in
// any case.
void useCorvelAppearance(QApplication &application, bool ownStyle = true);

#endif
