// Well-known folders of the user and of the process, on Linux.
//
// The names follow the desktop layout the rest of the library speaks of
// (library, caches, application support, desktop, documents, downloads);
// docs/files.md maps each onto the XDG base directories and the user's
// ~/.config/user-dirs.dirs. Folders are computed once per process and kept.
//
// Two homes exist inside a sandbox: the process's own (`homeDirectory`,
// $HOME) and the person's real one (`userHomeDirectory`, from the user
// database). Outside a sandbox they are the same.
#pragma once

#include <string>
#include <vector>

namespace norvane::files {

// The process's folders.
const std::string& homeDirectory();                // $HOME, else the user database entry
const std::string& libraryDirectory();             // $XDG_DATA_HOME (~/.local/share)
const std::string& cachesDirectory();              // $XDG_CACHE_HOME (~/.cache)
const std::string& applicationSupportDirectory();  // $XDG_DATA_HOME (~/.local/share)
const std::string& preferencesDirectory();         // $XDG_CONFIG_HOME (~/.config)
const std::string& desktopDirectory();             // XDG_DESKTOP_DIR (~/Desktop)
const std::string& downloadsDirectory();           // XDG_DOWNLOAD_DIR (~/Downloads)
std::string pathInHomeDirectory(const std::string& component);
std::string pathInLibraryDirectory(const std::string& component);
std::string pathInPreferencesDirectory(const std::string& component);
std::string pathInCachesDirectory(const std::string& component);
std::string pathInApplicationSupportDirectory(const std::string& component);

// True inside a sandbox: APP_SANDBOX_CONTAINER_ID or FLATPAK_ID is set, or
// /.flatpak-info exists.
bool isSandboxed();

// The person's folders.
const std::string& userHomeDirectory();
const std::string& userLibraryDirectory();
const std::string& userDocumentsFolder();  // XDG_DOCUMENTS_DIR of the real home
const std::string& userDesktopFolder();    // XDG_DESKTOP_DIR of the real home
// Cloud-synchronised folders found through their clients' configuration:
// Dropbox (~/.dropbox/info.json, personal then business, else ~/Dropbox)
// and Nextcloud/ownCloud (localPath entries of their client configuration).
const std::vector<std::string>& DropboxFolders();
const std::vector<std::string>& NextcloudFolders();

// Temporary folder of the system: $TMPDIR, else "/tmp/"; always ends in "/".
const std::string& temporarySystemDirectory();

// Logs the folders the system relies on and every expected tool that is
// missing ("ERROR: %@ does not exist.") or a symbolic link ("ERROR: %@ is
// symbolic link.").
void testSystemPaths();

namespace testing {
// Forgets the kept folders so that a test can change the environment.
void forgetKeptFolders();
}  // namespace testing

}  // namespace norvane::files
