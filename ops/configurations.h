// SPDX-License-Identifier: MIT
//
// The named configurations of this server. Blocks for as long as the disk takes.
#ifndef CORVEL_OPS_CONFIGURATIONS_H
#define CORVEL_OPS_CONFIGURATIONS_H

#include "ops/outcome.h"

#include <QByteArrayList>

namespace ops {

// In order; the default one is among them also when its file is not made yet.
QByteArrayList configurationNames();
QByteArray defaultConfiguration();
bool hasConfiguration(const QByteArray &name);
Failure noSuchConfiguration(const QByteArray &name); // with a near miss

enum class Doing { Check, Make }; // Check: only whether it may be done

// None of them touches the configuration that the server uses, apart from useConfiguration.
Outcome<Done> newConfiguration(const QByteArray &name, Doing doing = Doing::Make);
Outcome<Done> copyConfiguration(const QByteArray &from, const QByteArray &to, Doing doing = Doing::Make);
Outcome<Done> renameConfiguration(const QByteArray &from, const QByteArray &to, Doing doing = Doing::Make);
Outcome<Done> deleteConfiguration(const QByteArray &name, Doing doing = Doing::Make);
Outcome<Done> useConfiguration(const QByteArray &name, Doing doing = Doing::Make);

} // namespace ops

#endif
