// SPDX-License-Identifier: MIT
//
// The named configurations of the store: one database file each, in the folder of the configurations. One of
// them is in use, for every program of the machine. The calls may block for as long as the disk does.
#ifndef CORVEL_CONFIGURATIONS_H
#define CORVEL_CONFIGURATIONS_H

#include <QString>
#include <QStringList>

// The end of a configuration's file name.
constexpr char kConfigurationSuffix[] = ".rkcfg";

// The one in use; empty when the store cannot tell.
QString configurationInUse();

// All configurations on disk by name. The one in use is always among them: without a file of its own it
// comes first. inUse, when given, gets its name; it is empty when the store cannot tell.
QStringList configurations(QString *inUse = nullptr);

// Closes the store, saving first, and puts another configuration in use. A name that the store refuses
// changes nothing.
void useConfiguration(const QString &name);

#endif
