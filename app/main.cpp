// SPDX-License-Identifier: MIT
#include "app/appearance.h"
#include "app/corvel.h"
#include "app/toolkitlog.h"
#include "rkos.h"

#include <QApplication>

namespace {

constexpr char kVersion[] = CORVEL_VERSION ".0";
constexpr char kBuild[] = "197";

} // namespace

int main(int argc, char **argv)
{
    ErrLogSetFileName("corvel");
    logToolkitMessages();
    QCoreApplication::setOrganizationName(QStringLiteral("Halvect"));
    QCoreApplication::setApplicationName(QStringLiteral("corvel"));
    QCoreApplication::setApplicationVersion(QLatin1String(kVersion));
    ErrOut("Application Version %s.%s", kVersion, kBuild);
    // Every file dialog is the toolkit's own. Has to be set before the application object exists.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const bool ownStyle = !choosesStyle(argc, argv);
    QApplication application(argc, argv);
    useCorvelAppearance(application, ownStyle);

    QCorvel dialog(true, nullptr);
    dialog.show();
    toolkitStarted();
    return QApplication::exec();
}
