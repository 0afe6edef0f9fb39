// SPDX-License-Identifier: MIT
//
// Loaded before the program: closes its windows after CORVEL_QUIT_AFTER_MS, as a person would, counted
// from the start of its event loop, and says before who it is: organisation, name, version, and whether its
// file dialogs are the toolkit's own.
#include "fake/real.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

int QApplication::exec()
{
    printf("%s %s %s %d\n", qPrintable(organizationName()), qPrintable(applicationName()),
           qPrintable(applicationVersion()), testAttribute(Qt::AA_DontUseNativeDialogs));
    QTimer::singleShot(qEnvironmentVariableIntValue("CORVEL_QUIT_AFTER_MS"), qApp,
                       [] { QApplication::closeAllWindows(); });
    return real(QApplication::exec, "_ZN12QApplication4execEv")();
}
