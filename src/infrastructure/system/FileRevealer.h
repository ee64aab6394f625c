#pragma once

#include <QString>

/// Shows a file in the desktop's file manager (org.freedesktop.FileManager1), or opens its
/// folder when no file manager answers. Returns at once; GUI thread.
namespace FileRevealer {

void reveal(const QString& filePath);

} // namespace FileRevealer
