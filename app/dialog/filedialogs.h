// SPDX-License-Identifier: MIT
//
// The file dialogs of the commands: the toolkit's own, without a parent, as large as the screen's scale asks
// for and with every column readable.
#ifndef CORVEL_DIALOG_FILEDIALOGS_H
#define CORVEL_DIALOG_FILEDIALOGS_H

#include <QString>

// The chosen path with this system's separators, empty when there is none. Both run an event loop; whoever
// called may be gone afterwards.
QString askFileToLoad(const QString &caption, const QString &folder, const QString &filters);
QString askFileToSave(const QString &caption, const QString &folder, const QString &filters);

#endif
