#include "SQLiteDatabase.h"

#include <filesystem>
#include <QFileInfo>
#include <sqlite3.h>

/// Owns one prepared statement and finalizes it on every path.
class SQLiteDatabase::Statement
{
public:
    explicit Statement(sqlite3_stmt* handle)
        : m_handle(handle)
    {}
    ~Statement() { sqlite3_finalize(m_handle); }
    Statement(Statement&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr))
    {}
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement& operator=(Statement&&) = delete;

    sqlite3_stmt* get() const { return m_handle; }

private:
    sqlite3_stmt* m_handle;
};

void SQLiteDatabase::Closer::operator()(sqlite3* db) const
{
    sqlite3_close(db);
}

SQLiteDatabase::SQLiteDatabase() = default;
SQLiteDatabase::~SQLiteDatabase() = default;

QString SQLiteDatabase::lastMessage() const
{
    return m_db ? QString::fromUtf8(sqlite3_errmsg(m_db.get()))
                : QStringLiteral("database not open");
}

SQLiteError SQLiteDatabase::lastError(SQLiteError::Kind kind) const
{
    return SQLiteError(kind, lastMessage(), m_db ? sqlite3_errcode(m_db.get()) & 0xff : 0);
}

void SQLiteDatabase::setBusyTimeout(int milliseconds)
{
    m_busyTimeoutMs = milliseconds;
    if (m_db)
        sqlite3_busy_timeout(m_db.get(), milliseconds);
}

void SQLiteDatabase::open(const QString& path)
{
    const std::filesystem::path folder = QFileInfo(path).absolutePath().toStdString();
    if (!std::filesystem::exists(folder))
        std::filesystem::create_directories(folder); // throws the file system's own error

    m_db.reset();
    sqlite3* handle = nullptr;
    const int status = sqlite3_open(path.toUtf8().constData(), &handle);
    if (status != SQLITE_OK || !handle) {
        const QString message =
            handle ? QString::fromUtf8(sqlite3_errmsg(handle)) : QStringLiteral("unknown error");
        const int code = handle ? sqlite3_errcode(handle) & 0xff : 0;
        sqlite3_close(handle);
        throw SQLiteError(SQLiteError::Kind::Open, message, code);
    }
    m_db.reset(handle);
    sqlite3_busy_timeout(handle, m_busyTimeoutMs);
    query(QStringLiteral("PRAGMA journal_mode=WAL"));
    execute(QStringLiteral("PRAGMA foreign_keys=ON"));
}

bool SQLiteDatabase::isReadOnly() const
{
    return m_db && sqlite3_db_readonly(m_db.get(), "main") == 1;
}

QString SQLiteDatabase::checkIntegrity()
{
    Statement statement = prepare(QStringLiteral("PRAGMA quick_check(1)"));
    if (sqlite3_step(statement.get()) != SQLITE_ROW)
        throw lastError(SQLiteError::Kind::Step);
    return QString::fromUtf8(
        reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)));
}

SQLiteDatabase::Statement SQLiteDatabase::prepare(const QString& sql)
{
    sqlite3_stmt* handle = nullptr;
    const int status =
        sqlite3_prepare_v2(m_db.get(), sql.toUtf8().constData(), -1, &handle, nullptr);
    Statement statement(handle);
    if (status != SQLITE_OK || !handle)
        throw lastError(SQLiteError::Kind::Prepare);
    return statement;
}

void SQLiteDatabase::bind(Statement& statement, const QList<SQLiteValue>& parameters)
{
    int index = 1;
    for (const SQLiteValue& value : parameters) {
        sqlite3_stmt* handle = statement.get();
        int status = SQLITE_OK;
        if (value.isInteger()) {
            status = sqlite3_bind_int64(handle, index, value.toInteger());
        } else if (value.isReal()) {
            status = sqlite3_bind_double(handle, index, value.toReal());
        } else if (value.isText()) {
            status = sqlite3_bind_text(handle, index, value.toText().toUtf8().constData(), -1,
                                       SQLITE_TRANSIENT);
        } else if (value.isBlob()) {
            const QByteArray& bytes = value.toBlob();
            // A zero-length blob still needs a non-null pointer, or SQLite binds NULL.
            static const char kEmpty = 0;
            status = sqlite3_bind_blob(handle, index, bytes.isEmpty() ? &kEmpty : bytes.constData(),
                                       int(bytes.size()), SQLITE_TRANSIENT);
        } else {
            status = sqlite3_bind_null(handle, index);
        }
        if (status != SQLITE_OK)
            throw lastError(SQLiteError::Kind::Bind);
        ++index;
    }
}

int SQLiteDatabase::execute(const QString& sql, const QList<SQLiteValue>& parameters)
{
    Statement statement = prepare(sql);
    bind(statement, parameters);
    if (sqlite3_step(statement.get()) != SQLITE_DONE)
        throw lastError(SQLiteError::Kind::Step);
    return sqlite3_changes(m_db.get());
}

QList<SQLiteRow> SQLiteDatabase::query(const QString& sql, const QList<SQLiteValue>& parameters)
{
    Statement statement = prepare(sql);
    bind(statement, parameters);
    sqlite3_stmt* handle = statement.get();
    const int columns = sqlite3_column_count(handle);

    QList<SQLiteRow> rows;
    while (sqlite3_step(handle) == SQLITE_ROW) {
        SQLiteRow row;
        for (int column = 0; column < columns; ++column) {
            const QString name = QString::fromUtf8(sqlite3_column_name(handle, column));
            switch (sqlite3_column_type(handle, column)) {
            case SQLITE_INTEGER:
                row.insert(name, SQLiteValue::integer(sqlite3_column_int64(handle, column)));
                break;
            case SQLITE_FLOAT:
                row.insert(name, SQLiteValue::real(sqlite3_column_double(handle, column)));
                break;
            case SQLITE_TEXT:
                row.insert(name, SQLiteValue::text(QString::fromUtf8(reinterpret_cast<const char*>(
                                     sqlite3_column_text(handle, column)))));
                break;
            case SQLITE_BLOB: {
                const int size = sqlite3_column_bytes(handle, column);
                const void* data = sqlite3_column_blob(handle, column);
                row.insert(name, SQLiteValue::blob(
                                     size < 1 || !data
                                         ? QByteArray()
                                         : QByteArray(static_cast<const char*>(data), size)));
                break;
            }
            default:
                row.insert(name, SQLiteValue::null());
                break;
            }
        }
        rows << row;
    }
    return rows;
}
