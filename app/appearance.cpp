// SPDX-License-Identifier: MIT
#include "app/appearance.h"

#include <QApplication>
#include <QFontInfo>
#include <QIcon>
#include <QPalette>
#include <QStyleFactory>

#include <cstring>

// The icon lives in a static library; its resources have to be asked for by name, outside any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(corvel);
}

namespace {

constexpr int kPointSize = 10;

constexpr char kDesktopEntry[] = "org.corvel.Corvel"; // packaging/org.corvel.Corvel.desktop

// Noto Sans has digits of even width, so the running clock does not jitter. Asking for one family is
// much quicker than listing all that are installed.
QString preferredFamily()
{
    for (const char *family : {"Noto Sans", "DejaVu Sans"}) {
        if (QFontInfo(QFont(QLatin1String(family), kPointSize)).family() == QLatin1String(family))
            return QLatin1String(family);
    }
    return QApplication::font().family();
}

struct PaletteRow {
    QPalette::ColorRole role;
    QRgb colour;
    QRgb disabled;
};

// clang-format off
const PaletteRow kPalette[] = {
    // role,                       colour,     disabled
    {QPalette::Window,          0xff3a3a3a, 0xff3a3a3a},
    {QPalette::WindowText,      0xffffffff, 0xffc0c0c0},
    {QPalette::Base,            0xff1e1e1e, 0xff404040},
    {QPalette::AlternateBase,   0xff262626, 0xff404040},
    {QPalette::Text,            0xffffffff, 0xffc0c0c0},
    {QPalette::PlaceholderText, 0xffc0c0c0, 0xffc0c0c0},
    {QPalette::Button,          0xff505050, 0xff404040},
    {QPalette::ButtonText,      0xffffffff, 0xffc0c0c0},
    {QPalette::BrightText,      0xffffffff, 0xffffffff},
    {QPalette::Highlight,       0xff00abff, 0xff565656},
    {QPalette::HighlightedText, 0xff101010, 0xffc0c0c0},
    {QPalette::ToolTipBase,     0xff262626, 0xff262626},
    {QPalette::ToolTipText,     0xffffffff, 0xffffffff},
    {QPalette::Link,            0xff66ccff, 0xffc0c0c0},
};
// clang-format on

} // namespace

bool choosesStyle(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const char *option = argv[i];
        if (strncmp(option, "--", 2) == 0)
            ++option; // the toolkit takes one dash or two
        if (strcmp(option, "-style") == 0 || strncmp(option, "-style=", 7) == 0)
            return true;
    }
    return false;
}

void useCorvelAppearance(QApplication &application, bool ownStyle)
{
    initResources();
    QGuiApplication::setDesktopFileName(QLatin1String(kDesktopEntry));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/resources/corvel-128.png")));
    if (ownStyle)
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette = application.palette();
    for (const PaletteRow &row : kPalette) {
        palette.setColor(row.role, QColor::fromRgb(row.colour));
        palette.setColor(QPalette::Disabled, row.role, QColor::fromRgb(row.disabled));
    }
    QApplication::setPalette(palette);
    QApplication::setFont(QFont(preferredFamily(), kPointSize));
}
