// SPDX-License-Identifier: MIT
//
// Loaded before the program: closes its windows after CORVEL_QUIT_AFTER_MS, as a person would, counted
// from the start of its event loop.
#include <QApplication>
#include <QTimer>

#include <dlfcn.h>

int QApplication::exec()
{
    using Exec = int (*)();
    const Exec real = reinterpret_cast<Exec>(dlsym(RTLD_NEXT, "_ZN12QApplication4execEv"));
    QTimer::singleShot(qEnvironmentVariableIntValue("CORVEL_QUIT_AFTER_MS"), qApp,
                       [] { QApplication::closeAllWindows(); });
    return real();
}
