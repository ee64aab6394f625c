#pragma once

#include <QByteArray>
#include <QStringList>
#include <vector>

/// A libmpv command's arguments as the C interface takes them: NUL-terminated copies (UTF-8 for
/// text) plus the terminating null entry, alive as long as this object.
class MPVCommand
{
public:
    explicit MPVCommand(const QStringList& args)
    {
        m_storage.reserve(size_t(args.size()));
        for (const QString& arg : args)
            m_storage.push_back(arg.toUtf8());
        point();
    }
    /// Arguments passed as the bytes they are: file names need not be UTF-8.
    explicit MPVCommand(const QList<QByteArray>& args)
        : m_storage(args.begin(), args.end())
    {
        point();
    }

    const char** data() { return m_pointers.data(); }

private:
    void point()
    {
        for (const QByteArray& bytes : m_storage)
            m_pointers.push_back(bytes.constData());
        m_pointers.push_back(nullptr);
    }

    std::vector<QByteArray> m_storage;
    std::vector<const char*> m_pointers;
};
