#pragma once

#include <QUrl>

/// Shows a file in the desktop's file manager (org.freedesktop.FileManager1), or opens its
/// folder when no file manager answers. The file goes by its URL, which keeps a name that is
/// not UTF-8 intact. Returns at once; GUI thread.
namespace FileRevealer {

void reveal(const QUrl& file);

} // namespace FileRevealer
