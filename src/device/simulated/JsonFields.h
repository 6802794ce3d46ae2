#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <optional>

/// Reads typed values out of a parsed JSON document and names the field of
/// the first fault ("smart.attributes[2].raw: ..."). Reading goes on after a
/// fault without effect, so a caller checks once at the end. An absent value
/// (undefined) is not a fault: every reader then returns nothing.
class JsonFields
{
public:
    /// Whether a fault was found.
    bool failed() const { return !m_error.isEmpty(); }
    /// The first fault, with its field.
    QString error() const { return m_error; }
    /// Records a fault unless one is already recorded.
    void fail(const QString &field, const QString &what);

    /// Field path of \a key inside \a field.
    static QString child(const QString &field, const QString &key);
    /// Field path of item \a index of the list \a field.
    static QString item(const QString &field, qsizetype index);

    /// Faults on a key not in \a known; "comment" and keys starting with "_" are notes and always allowed.
    void checkKeys(const QJsonObject &object, const QString &field, const QStringList &known);

    /// A whole number in [lowest, highest]: a JSON number, or a string in decimal or 0x hexadecimal.
    std::optional<qint64> integer(const QJsonValue &value, const QString &field, qint64 lowest, qint64 highest);
    /// Any number in [lowest, highest].
    std::optional<double> number(const QJsonValue &value, const QString &field, double lowest, double highest);
    std::optional<QString> string(const QJsonValue &value, const QString &field);
    std::optional<bool> boolean(const QJsonValue &value, const QString &field);
    std::optional<QJsonObject> object(const QJsonValue &value, const QString &field);
    std::optional<QJsonArray> array(const QJsonValue &value, const QString &field);
    /// An object whose keys must all be in \a known (see checkKeys).
    std::optional<QJsonObject> section(const QJsonValue &value, const QString &field, const QStringList &known);

    /// How a value appears in a message: the number or text itself, or its kind.
    static QString describe(const QJsonValue &value);

private:
    QString m_error;
};
