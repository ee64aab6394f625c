#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <variant>

/// One SQLite value: a bound parameter or a result column.
class SQLiteValue
{
public:
    struct Null
    {
        friend bool operator==(Null, Null) = default;
    };

    /// NULL.
    SQLiteValue() = default;

    static SQLiteValue integer(qint64 value) { return SQLiteValue(value); }
    static SQLiteValue real(double value) { return SQLiteValue(value); }
    static SQLiteValue text(const QString& value) { return SQLiteValue(value); }
    /// An empty buffer is a zero-length blob, not NULL.
    static SQLiteValue blob(const QByteArray& value) { return SQLiteValue(value); }
    static SQLiteValue null() { return SQLiteValue(Null{}); }

    bool isInteger() const { return std::holds_alternative<qint64>(m_value); }
    bool isReal() const { return std::holds_alternative<double>(m_value); }
    bool isText() const { return std::holds_alternative<QString>(m_value); }
    bool isBlob() const { return std::holds_alternative<QByteArray>(m_value); }
    bool isNull() const { return std::holds_alternative<Null>(m_value); }

    // Each accessor requires the matching kind.
    qint64 toInteger() const { return std::get<qint64>(m_value); }
    double toReal() const { return std::get<double>(m_value); }
    const QString& toText() const { return std::get<QString>(m_value); }
    const QByteArray& toBlob() const { return std::get<QByteArray>(m_value); }

    friend bool operator==(const SQLiteValue&, const SQLiteValue&) = default;

private:
    using Storage = std::variant<Null, qint64, double, QString, QByteArray>;
    template <typename T>
    explicit SQLiteValue(T value)
        : m_value(std::move(value))
    {}

    Storage m_value;
};

/// A result row: column name (or alias) to value. A later column wins over an earlier one of
/// the same name.
using SQLiteRow = QHash<QString, SQLiteValue>;

/// A statement with its positional parameters, ready to be run.
struct SQLiteStatement
{
    QString sql;
    QList<SQLiteValue> parameters;
};
