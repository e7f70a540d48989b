#include "windowlook.h"

#include <checkedjson.h>
#include <wholefile.h>

#include <QFile>
#include <QJsonDocument>

namespace {

const QString formatName = QStringLiteral("frontend-window-1");
constexpr int maxPixels = 100000;

} // namespace

std::optional<WindowLook> readWindowLook(const QString& file, QString* error)
{
    QFile source(file);
    if (!source.exists())
        return std::nullopt;
    if (!source.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(file, source.errorString());
        return std::nullopt;
    }
    const std::optional<QJsonObject> root = parseJsonObject(source.readAll(), file, error);
    if (!root)
        return std::nullopt;
    error->clear();
    CheckedObject object(*root, file, error);
    object.choice("format", {formatName});
    WindowLook look;
    look.size.setWidth(static_cast<int>(object.number("width", 1, maxPixels)));
    look.size.setHeight(static_cast<int>(object.number("height", 1, maxPixels)));
    look.isMaximized = object.flag("isMaximized", false);
    look.isDark = object.flag("isDark", false);
    object.finish();
    return object.ok() ? std::make_optional(look) : std::nullopt;
}

bool writeWindowLook(const QString& file, const WindowLook& look, QString* error)
{
    const QJsonObject object{{"format", formatName},
                             {"width", look.size.width()},
                             {"height", look.size.height()},
                             {"isMaximized", look.isMaximized},
                             {"isDark", look.isDark}};
    return writeWholeFile(file, QJsonDocument(object).toJson(), error);
}
