/// What the file system says about a path, what is done to files by path, and other forms of paths.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <functional>

// Relative paths start at the working directory of the process. The file system is asked afresh by
// every call. The call stack follows the message of a thrown `TPath::Exception` while
// `OptLogStackOnFileError` is on.
//
// Thread safety: every function may be called from any thread; what other threads or processes do
// to the same files at the same time may show half done.

/// What `CopyFile` does when there is something at the destination. Any other value counts as
/// `Overwrite`.
enum class CopyOption : int
{
    FailIfExists = 0,
    OverwriteUnlessSame = 1, ///< Does nothing when both have the same canonical path.
    Overwrite = 2,
    OverwriteIfNewer = 3 ///< Does nothing when the destination is a file and is not older.
};

// Existence and kind. A symbolic link exists even when it leads nowhere; otherwise it has the kind
// of what it leads to.

KORCOREPLATFORM_EXPORT bool PathExists(TPath const& path);

/// A path that does not exist is no directory and no file.
/// Throws: `TPath::Exception` with id AutoGen_0x4C0573C8, and AutoGen_0xD1E89D61 of
/// `IsRegularFile`, when the path does not exist and `noThrow` is false.
KORCOREPLATFORM_EXPORT bool IsDirectory(TPath const& path, bool noThrow);
KORCOREPLATFORM_EXPORT bool IsRegularFile(TPath const& path, bool noThrow);

/// Throws: `TPath::Exception` with id AutoGen_0xC4B62E99 when the path does not exist.
KORCOREPLATFORM_EXPORT bool IsSymlink(TPath const& path);

KORCOREPLATFORM_EXPORT bool FileExists(TPath const& path);      ///< Of a regular file.
KORCOREPLATFORM_EXPORT bool DirectoryExists(TPath const& path); ///< Of a directory.

/// In bytes.
/// Throws: `TPath::Exception` with id AutoGen_0x7F4B3D5C for everything but an existing file, a
/// directory included.
KORCOREPLATFORM_EXPORT long long FileSize(TPath const& path);

/// As `FileSize`, but -1 instead of its exception.
KORCOREPLATFORM_EXPORT long long GetFileSize(TPath const& path);

// Changing the file system

/// Removes a file, a symbolic link (not what it leads to) or an empty directory. Returns whether
/// there is nothing at the path now; nothing to remove is a success.
KORCOREPLATFORM_EXPORT bool RemovePath(TPath const& path);

/// Copies a file with its permissions, to `to` or, when that is a directory, to the same name in
/// it. A file or link at the destination is removed first, so copying a file to itself with
/// `Overwrite` loses it: `OverwriteUnlessSame` is the safe choice.
///
/// What went wrong with which paths is logged at Error; the exception has only a short text.
/// Throws: `TPath::Exception` with id AutoGen_0x7C7DFAB4 when the destination exists and must not,
/// AutoGen_0x0C5F149A when it is neither file nor link, AutoGen_0xF7FF15E2 when copying fails,
/// AutoGen_0xBF27D89B when there is no `from` to compare the times with.
KORCOREPLATFORM_EXPORT void CopyFile(TPath const& from, TPath const& to, CopyOption option);

/// Sets the working directory of the whole process. A failure changes nothing and is not reported.
KORCOREPLATFORM_EXPORT void ChangeDirectory(TPath const& path);

// Forms of a path

KORCOREPLATFORM_EXPORT TPath CurrentPath(); ///< The working directory.

/// The absolute path without symbolic links, "." and ".."; empty when there is nothing at the path.
/// The file system is not asked about a UNC path, which gives its normal form.
KORCOREPLATFORM_EXPORT TPath CanonicalPath(TPath const& path);

/// The path without ".", without "..", as far as an element goes before it, and without separators
/// that say nothing. Only the text is looked at: a symbolic link before ".." is not followed.
///
///     a/./b => a/b    a/b/../c => a/c    /.. => /    ../a => ../a    a/.. => (empty)
///     C:/a/.. => C:/                     //server/share/.. => //server/
KORCOREPLATFORM_EXPORT TPath NormalPath(TPath const& path);

/// The home directory of the process's real user: what the system's list of users says, and the
/// environment variable HOME only for a user who is not in it.
KORCOREPLATFORM_EXPORT TPath HomePath();

/// The name of the process's real user, empty when the system does not know it.
KORCOREPLATFORM_EXPORT TString UserName();

/// Puts the home directory in the place of a "~" that is the path or stands before the first "/".
/// "~user" and every other path stay as they are.
KORCOREPLATFORM_EXPORT TPath ExpandHomePath(TPath const& path);

// Where the process and its modules lie. Answers are absolute, and empty when the system gives
// none.

KORCOREPLATFORM_EXPORT TPath ExecutablePath();     ///< The directory of the running executable.
KORCOREPLATFORM_EXPORT TPath ExecutableFilename(); ///< The full path of the running executable.

/// The directory of a loaded module, given by its file name or, with a directory, by the path under
/// which it was loaded; for an empty path the same as `ExecutablePath()`.
KORCOREPLATFORM_EXPORT TPath ModulePath(TPath const& module);

/// The full path, and the directory, of the loaded module that holds `address`.
KORCOREPLATFORM_EXPORT TPath ModuleFilename(void const* address);
KORCOREPLATFORM_EXPORT TPath ModuleDirectory(void const* address);

// Pieces of names, as the functions of `TPath` have them

KORCOREPLATFORM_EXPORT TString GetFileName(TString const& path);

/// As many units from the beginning as there are before the file name: "a/" for "a/b.txt". The file
/// name is that of a path, which "a/b/" loses its last "/" to become: its result is "a/b".
KORCOREPLATFORM_EXPORT TString GetFileDirectory(TString const& path);

KORCOREPLATFORM_EXPORT TString GetFileTitle(TPath const& path);        ///< `Stem()`
KORCOREPLATFORM_EXPORT TString FileExtension(TPath const& path);       ///< In lower case.
KORCOREPLATFORM_EXPORT TString RemoveFileExtension(TPath const& path); ///< The rest of the path.

// Whole text files

/// Reads a text file as `TFile::LoadTextFile` does, and throws what that throws.
KORCOREPLATFORM_EXPORT TString LoadXMLFile(TPath const& path, bool normalize);

/// Writes `text` as UTF-8 to the end of the file, or in the place of its content; with `toDos`,
/// lines end as on DOS. `onOpened` is called with `path` between opening and writing.
///
/// A failed write is only logged, at Error with id AutoGen_0x8CA372D6. When the file turns out
/// empty although the text is not, that is logged at Info. Throws: what `TFile` throws when the
/// file cannot be opened, for writing or for reading it again; what `FlushFileWithRetry` throws
/// after five failures, half a second each; `std::bad_function_call` for an empty `onOpened`, and
/// what that throws: the file is then opened, and emptied unless `append`.
KORCOREPLATFORM_EXPORT void SaveXMLFile(TPath const& path, TString const& text, bool toDos,
                                        bool append,
                                        std::function<void(TPath const&)> const& onOpened);
