#include "JsonFields.h"

#include <cmath>

namespace {

// Doubles hold whole numbers exactly only up to 2^53; raw values are 48-bit.
constexpr double kExactLimit = 9007199254740992.0;

} // namespace

void JsonFields::fail(const QString &field, const QString &what)
{
    if (m_error.isEmpty())
        m_error = field.isEmpty() ? what : QStringLiteral("%1: %2").arg(field, what);
}

QString JsonFields::child(const QString &field, const QString &key)
{
    return field.isEmpty() ? key : field + QLatin1Char('.') + key;
}

QString JsonFields::item(const QString &field, qsizetype index)
{
    return QStringLiteral("%1[%2]").arg(field).arg(index);
}

void JsonFields::checkKeys(const QJsonObject &object, const QString &field, const QStringList &known)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString &key = it.key();
        if (key == QLatin1String("comment") || key.startsWith(QLatin1Char('_')) || known.contains(key))
            continue;
        fail(child(field, key), QStringLiteral("unknown field (known here: %1)").arg(known.join(QStringLiteral(", "))));
    }
}

std::optional<qint64> JsonFields::integer(const QJsonValue &value, const QString &field, qint64 lowest,
                                          qint64 highest)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    const QString range = QStringLiteral("expected a whole number from %1 to %2, found %3")
                              .arg(lowest)
                              .arg(highest)
                              .arg(describe(value));
    qint64 result = 0;
    if (value.isDouble()) {
        const double d = value.toDouble();
        if (d != std::floor(d) || std::fabs(d) > kExactLimit) {
            fail(field, range);
            return std::nullopt;
        }
        result = qint64(d);
    } else if (value.isString()) {
        const QString text = value.toString().trimmed();
        bool ok = false;
        if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
            result = text.mid(2).toLongLong(&ok, 16);
        else
            result = text.toLongLong(&ok, 10);
        if (!ok) {
            fail(field, range);
            return std::nullopt;
        }
    } else {
        fail(field, range);
        return std::nullopt;
    }
    if (result < lowest || result > highest) {
        fail(field, range);
        return std::nullopt;
    }
    return result;
}

std::optional<double> JsonFields::number(const QJsonValue &value, const QString &field, double lowest,
                                         double highest)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    if (!value.isDouble() || value.toDouble() < lowest || value.toDouble() > highest) {
        fail(field, QStringLiteral("expected a number from %1 to %2, found %3").arg(lowest).arg(highest).arg(describe(value)));
        return std::nullopt;
    }
    return value.toDouble();
}

std::optional<QString> JsonFields::string(const QJsonValue &value, const QString &field)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    if (!value.isString()) {
        fail(field, QStringLiteral("expected a text in quotes, found %1").arg(describe(value)));
        return std::nullopt;
    }
    return value.toString();
}

std::optional<bool> JsonFields::boolean(const QJsonValue &value, const QString &field)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    if (!value.isBool()) {
        fail(field, QStringLiteral("expected true or false, found %1").arg(describe(value)));
        return std::nullopt;
    }
    return value.toBool();
}

std::optional<QJsonObject> JsonFields::object(const QJsonValue &value, const QString &field)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    if (!value.isObject()) {
        fail(field, QStringLiteral("expected an object { ... }, found %1").arg(describe(value)));
        return std::nullopt;
    }
    return value.toObject();
}

std::optional<QJsonArray> JsonFields::array(const QJsonValue &value, const QString &field)
{
    if (value.isUndefined() || failed())
        return std::nullopt;
    if (!value.isArray()) {
        fail(field, QStringLiteral("expected a list [ ... ], found %1").arg(describe(value)));
        return std::nullopt;
    }
    return value.toArray();
}

std::optional<QJsonObject> JsonFields::section(const QJsonValue &value, const QString &field, const QStringList &known)
{
    auto result = object(value, field);
    if (result)
        checkKeys(*result, field, known);
    return result;
}

QString JsonFields::describe(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 17);
    case QJsonValue::String:
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}
