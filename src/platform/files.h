// File-system services of the host: file status, folder creation, whole-file writing, the module's own path.
#pragma once

#include <string>
#include <string_view>

namespace platform {

#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

enum class FileKind { Missing, File, Folder };

// What exists under a path (the host's find-first-file on the path itself).
FileKind fileKind(const std::string& path);
// Creates one folder whose parent exists; false when it cannot.
bool makeFolder(const std::string& path);

// Creates a folder and every missing parent, one level at a time from the top. Succeeds when the folder
// exists afterwards; a file standing under the name of the folder or of a parent stops the creation
// (the file is left alone) and fails.
bool CreateFolderPath(std::string path);

// The system's words for an error number (errno), safe to ask from several threads at once.
std::string systemErrorText(int error);

// Opens a file for reading without waiting on it (a FIFO with no writer is refused, not waited on): its
// descriptor and size, or -1 with an error text naming the file when it cannot be opened or is no regular
// file ("not a regular file (a folder)", a FIFO, a device).
int openRegularFile(const std::string& path, long long& size, std::string* error = nullptr);
// Reads a whole file; false (and an error text) when it cannot be read.
bool readWholeFile(const std::string& path, std::string& contents, std::string* error = nullptr);
// Reads at most count bytes from the start of a file (fewer when it is shorter); false when it cannot be opened
// or is no regular file (a folder, a FIFO, a device).
bool readFileHead(const std::string& path, std::size_t count, std::string& bytes);
// Writes a file whole or not at all: the bytes go to a temporary file beside it, which then replaces the
// old file in one step. A read-only file, or a folder that cannot be written, leaves the old file intact.
bool writeWholeFile(const std::string& path, std::string_view contents, std::string* error = nullptr);

// The full path of the module file that holds the calling code (the shared library, or the executable it
// was linked into), as GetModuleFileName answers for the caller's module. Never inline it: it must see
// its caller.
[[gnu::noinline]] std::string moduleFilePath();

// The file-name part of a path: what follows the last separator (the whole path when there is none).
std::string_view fileNamePart(std::string_view path);
// The path up to its last separator (empty when there is none).
std::string_view parentPath(std::string_view path);
// A name below a folder: the folder, the platform's separator, the name.
std::string joinPath(const std::string& folder, std::string_view name);

}  // namespace platform
