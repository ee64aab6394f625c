#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

/// How the library writes identities: URLs as their full "file:///..." text, UUIDs in upper
/// case without braces.
namespace LibraryIdentity {

inline QString urlText(const QUrl& url)
{
    return url.toString(QUrl::FullyEncoded);
}

inline QString uuidText(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace LibraryIdentity
