// SPDX-License-Identifier: MIT
//
// corvel_host: the embedded dialog in an application of its own. With --press it shows what happens without
// anybody at the screen: the dialog is opened, its button with that caption is pressed, and the commands
// and the outcome are printed.
#include "app/corvel.h"
#include "hostwindow.h"
#include "recordingengine.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPushButton>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int kChannels = 4;
constexpr int kNoSuchButton = 100;

void print(const QString &line)
{
    QTextStream(stdout) << line << '\n';
}

// Presses the dialog's button; ends the program when there is none with this caption.
void press(const HostWindow &window, const QString &caption)
{
    for (QPushButton *button : window.dialog()->findChildren<QPushButton *>()) {
        if (button->text() != caption || !button->isVisible())
            continue;
        button->click();
        return;
    }
    QCoreApplication::exit(kNoSuchButton);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption pressOption(QStringLiteral("press"),
                                         QStringLiteral("Open the dialog, press this button, quit."),
                                         QStringLiteral("button"));
    parser.addOption(pressOption);
    parser.addHelpOption();
    parser.process(application);

    RecordingEngine engine(kChannels);
    HostWindow window(&engine);
    window.show();
    if (parser.isSet(pressOption)) {
        QObject::connect(&engine, &RecordingEngine::recorded, &application, print);
        QObject::connect(&window, &HostWindow::closed, &application, [&window](int result) {
            print(QStringLiteral("result %1: %2").arg(result).arg(window.outcome()));
            QCoreApplication::exit(0);
        });
        window.openDialog();
        QTimer::singleShot(0, &window,
                           [&window, &parser, &pressOption] { press(window, parser.value(pressOption)); });
    }
    return QApplication::exec();
}
