#include "norvane/files/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "norvane/files/folders.h"

namespace norvane::files {
namespace {

namespace fs = std::filesystem;

String S(const char16_t* s) {
  return String(s);
}

// Points HOME and the XDG variables into a fresh folder for one test.
class FakeHome : public ::testing::Test {
 protected:
  void SetUp() override {
    home_ = fs::path(::testing::TempDir()) / ("home-" + std::to_string(::getpid()));
    fs::remove_all(home_);
    fs::create_directories(home_ / ".config");
    for (const char* v :
         {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "APP_SANDBOX_CONTAINER_ID", "FLATPAK_ID", "TMPDIR"}) {
      unsetenv(v);
    }
    setenv("HOME", home_.c_str(), 1);
    testing::forgetKeptFolders();
  }
  void TearDown() override {
    fs::remove_all(home_);
    testing::forgetKeptFolders();
  }
  std::string home() const { return home_.string(); }
  fs::path home_;
};

TEST_F(FakeHome, FoldersFollowXdgDefaultsAndUserDirs) {
  std::ofstream(home_ / ".config/user-dirs.dirs") << "# written by xdg-user-dirs-update\n"
                                                     "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                                                     "XDG_DOCUMENTS_DIR=\"/srv/docs\"\n";
  EXPECT_EQ(homeDirectory(), home());
  EXPECT_EQ(libraryDirectory(), home() + "/.local/share");
  EXPECT_EQ(cachesDirectory(), home() + "/.cache");
  EXPECT_EQ(preferencesDirectory(), home() + "/.config");
  EXPECT_EQ(desktopDirectory(), home() + "/Schreibtisch");
  EXPECT_EQ(downloadsDirectory(), home() + "/Downloads");
  EXPECT_EQ(userDocumentsFolder(), "/srv/docs");
  EXPECT_EQ(userHomeDirectory(), home());
  EXPECT_EQ(pathInCachesDirectory("x"), home() + "/.cache/x");
  EXPECT_EQ(temporarySystemDirectory(), "/tmp/");
}

TEST_F(FakeHome, XdgVariablesWin) {
  setenv("XDG_CACHE_HOME", "/var/cache/me", 1);
  setenv("XDG_DATA_HOME", "relative/ignored", 1);
  testing::forgetKeptFolders();
  EXPECT_EQ(cachesDirectory(), "/var/cache/me");
  EXPECT_EQ(libraryDirectory(), home() + "/.local/share");
  unsetenv("XDG_CACHE_HOME");
  unsetenv("XDG_DATA_HOME");
}

TEST_F(FakeHome, CloudFolders) {
  fs::create_directories(home_ / ".dropbox");
  std::ofstream(home_ / ".dropbox/info.json")
      << R"json({"personal": {"path": "/data/Dropbox (Personal)"}, "business": {"path": "/data/Dropbox (Firm)"}})json";
  fs::create_directories(home_ / ".config/Nextcloud");
  std::ofstream(home_ / ".config/Nextcloud/nextcloud.cfg") << "[Accounts]\n0\\Folders\\1\\localPath=/data/Cloud/\n";
  EXPECT_EQ(DropboxFolders(), (std::vector<std::string>{"/data/Dropbox (Personal)", "/data/Dropbox (Firm)"}));
  struct Case {
    std::string path;
    bool cloud;
  };
  const Case cases[] = {
      {"/data/Dropbox (Firm)/report.pdf", true},
      {"/data/Dropbox (Firmware)/x", false},
      {"/data/Cloud/a", true},
      {"/anywhere/OneDrive/deep", true},
      {"/x/Google Drive", true},
      {"/x/onedrive/a", false},  // exact case
      {home() + "/Box Sync/a", true},
      {home() + "/Documents/CloudMe", true},
      {"/tmp/a", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(isCloudFolder(String::fromUtf8(c.path)), c.cloud);
    EXPECT_EQ(isVolatileFolder(String::fromUtf8(c.path)), c.cloud);
  }
}

TEST_F(FakeHome, DropboxDefaultsToHomeFolder) {
  EXPECT_EQ(DropboxFolders(), (std::vector<std::string>{home() + "/Dropbox"}));
}

TEST_F(FakeHome, TildesOutsideAndInsideSandbox) {
  EXPECT_EQ(expandTildeInPath(S(u"~/a")), String::fromUtf8(home() + "/a"));
  EXPECT_EQ(expandTildeInPath(S(u"~")), String::fromUtf8(home()));
  EXPECT_EQ(expandTildeInPath(S(u"~root/x")), S(u"/root/x"));
  String plain = S(u"/abs");
  EXPECT_TRUE(expandTildeInPath(plain).isSameObject(plain));
  EXPECT_EQ(abbreviateWithTildeInPath(String::fromUtf8(home() + "/a/b")), S(u"~/a/b"));
  EXPECT_EQ(abbreviateWithTildeInPath(String::fromUtf8(home() + "/")), S(u"~"));
  EXPECT_EQ(abbreviateWithTildeInPath(String::fromUtf8(home() + "x")), String::fromUtf8(home() + "x"));

  // In a sandbox the person's real home comes from the user database.
  setenv("APP_SANDBOX_CONTAINER_ID", "test", 1);
  testing::forgetKeptFolders();
  EXPECT_TRUE(isSandboxed());
  EXPECT_NE(userHomeDirectory(), home());
  EXPECT_EQ(homeDirectory(), home());
  EXPECT_EQ(expandTildeInPath(S(u"~/a")), String::fromUtf8(userHomeDirectory() + "/a"));
  EXPECT_EQ(expandTildeInPath(S(u"~root")), S(u"~root"));
  unsetenv("APP_SANDBOX_CONTAINER_ID");
}

TEST(PathTest, Classification) {
  EXPECT_TRUE(isVolumePath(S(u"/media/ann/STICK/a")));
  EXPECT_EQ(volumePath(S(u"/media/ann/STICK/a/b")), S(u"/media/ann/STICK"));
  EXPECT_EQ(volumePath(S(u"/run/media/ann/DISK/x")), S(u"/run/media/ann/DISK"));
  EXPECT_EQ(volumePath(S(u"/mnt/backup/2024")), S(u"/mnt/backup"));
  EXPECT_TRUE(volumePath(S(u"/media/ann")).isNull());
  EXPECT_TRUE(volumePath(S(u"/home/ann")).isNull());
  EXPECT_TRUE(isPath(S(u"~/x")));
  EXPECT_TRUE(isPath(S(u"/x")));
  EXPECT_FALSE(isPath(S(u"x/y")));
  EXPECT_FALSE(isPath(String()));
  EXPECT_TRUE(isTemporaryPath(S(u"/tmpfoo")));  // no slash needed behind /tmp
  EXPECT_TRUE(isTemporaryPath(S(u"/var/tmp/x")));
  EXPECT_FALSE(isTemporaryPath(S(u"/var/tmpx")));
  EXPECT_FALSE(isTemporaryPath(String()));
  EXPECT_TRUE(isValidPathExtension(S(u"pdf")));
  EXPECT_FALSE(isValidPathExtension(S(u"")));
  EXPECT_FALSE(isValidPathExtension(S(u"p-f")));
  EXPECT_FALSE(isValidPathExtension(S(u"abcdefghijklmnopqr")));  // 18
  EXPECT_TRUE(isValidPathExtension(S(u"abcdefghijklmnopq")));    // 17
}

TEST(PathTest, Filenames) {
  EXPECT_EQ(stringByCreatingFilename(S(u"..a:b/c..")), S(u"a-b-c"));
  EXPECT_EQ(stringByCreatingFilename(S(u"_/x%y&z*?<>|\\_")), S(u"x-y-z------"));
  EXPECT_EQ(stringByCreatingFilename(S(u"e\u0301")), S(u"\u00E9"));
  String fine = S(u"fine name");
  EXPECT_TRUE(stringByCreatingFilename(fine).isSameObject(fine));

  std::u16string longName(300, u'a');
  EXPECT_EQ(stringByCreatingFileSystemRepresentation(String(longName)).length(), 249u);
  std::u16string wide(200, u'\u00E9');  // two bytes each
  EXPECT_EQ(stringByCreatingFileSystemRepresentation(String(wide)).length(), 124u);
  String withExtension = stringByCreatingFileSystemRepresentationByAppendingExtension(String(longName), S(u"txt"));
  EXPECT_EQ(withExtension.length(), 249u);
  EXPECT_TRUE(withExtension.view().ends_with(u".txt"));
  EXPECT_EQ(stringByCreatingFileSystemRepresentationByAppendingExtension(S(u"a.txt"), S(u"txt")), S(u"a.txt"));
  EXPECT_EQ(stringByCreatingFileSystemRepresentationByAppendingExtension(S(u"a"), S(u"")), S(u"a"));
}

TEST(PathTest, Relations) {
  struct Case {
    const char16_t* path;
    const char16_t* directory;
    const char16_t* relative;
  };
  const Case cases[] = {
      {u"/x/y/z", u"/x", u"./y/z"},
      {u"/x/y", u"/x/q", u"../y"},
      {u"/x", u"/x/y/z", u"../../"},
      {u"/x/./y/../z", u"/x", u"./z"},
  };
  for (const auto& c : cases) EXPECT_EQ(relativePathToDirectory(S(c.path), S(c.directory)), S(c.relative));

  EXPECT_FALSE(pathIsInDirectory(S(u"/a/bc"), S(u"/a/b")));
  EXPECT_TRUE(pathIsInDirectory(S(u"/a/b/c"), S(u"/a/b///")));
  EXPECT_TRUE(pathIsInDirectory(S(u"/a/b"), S(u"/a/b")));  // equal text, other object
  String same = S(u"/a/b");
  EXPECT_FALSE(pathIsInDirectory(same, same));
  EXPECT_FALSE(pathIsInDirectory(S(u"/a"), S(u"/")));
  EXPECT_FALSE(pathIsInDirectory(S(u"/a"), String()));
  EXPECT_TRUE(pathIsInDirectories(S(u"/a/b"), {S(u"/c"), S(u"/a")}));

  std::vector<String> paths = {S(u"/b/x"), S(u"/a/y/z"), S(u"/a/y"), S(u"/b"), S(u"/ab")};
  minimumCoverOfPaths(paths);
  EXPECT_EQ(paths, (std::vector<String>{S(u"/a/y"), S(u"/ab"), S(u"/b")}));
}

TEST(PathTest, StandardFormsAndComponents) {
  struct Case {
    const char16_t* in;
    const char16_t* standardized;
    const char16_t* withoutFileComponent;
  };
  const Case cases[] = {
      {u"/a/./b/../c", u"/a/c", u"/a/./b/.."},
      {u"/", u"", u""},
      {u"a//b/", u"a/b", u"a//b"},
      {u"/../x", u"/x", u"/.."},
      {u"file", u"file", u""},
      {u"/file", u"/file", u"/"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(String(c.in).toUtf8()));
    EXPECT_EQ(standardizedPath(S(c.in)), S(c.standardized));
    EXPECT_EQ(stringByDeletingFileComponent(S(c.in)), S(c.withoutFileComponent));
  }
  EXPECT_EQ(pathComponents(S(u"/a/b/")), (std::vector<String>{S(u"/"), S(u"a"), S(u"b"), S(u"/")}));
  String standard = S(u"/a/b");
  EXPECT_TRUE(standardizedPath(standard).isSameObject(standard));
  EXPECT_EQ(lastPathComponent(S(u"/a/b.txt")), S(u"b.txt"));
}

TEST(PathTest, Extensions) {
  EXPECT_TRUE(lowercasePathExtension(S(u"/a.b/c")).isNull());
  EXPECT_EQ(lowercasePathExtension(S(u"x.TXT")), S(u"txt"));
  EXPECT_EQ(lowercasePathExtension(S(u"x.")), S(u""));
  EXPECT_TRUE(lowercasePathExtension(S(u"x")).isNull());
  EXPECT_EQ(validPathExtension(S(u"/p/page.php?id=1")), S(u"php"));
  EXPECT_EQ(validPathExtension(S(u"/p/page.a-b")), S(u""));
  String pdf = S(u"doc.PDF");
  EXPECT_TRUE(stringByAppendingPathExtensionIfNecessary(pdf, S(u"pdf")).isSameObject(pdf));
  EXPECT_EQ(stringByAppendingPathExtensionIfNecessary(S(u"doc"), S(u"pdf")), S(u"doc.pdf"));
  EXPECT_EQ(stringByReplacingPathExtensionWith(pdf, S(u"pdf")), S(u"doc.pdf"));  // exact case differs
  String txt = S(u"a.txt");
  EXPECT_TRUE(stringByReplacingPathExtensionWith(txt, S(u"txt")).isSameObject(txt));
  EXPECT_EQ(pathExtension(S(u"/x/.profile")), S(u""));
}

TEST(PathTest, Links) {
  fs::path folder = fs::path(::testing::TempDir()) / ("links-" + std::to_string(::getpid()));
  fs::remove_all(folder);
  fs::create_directories(folder / "real/inner");
  fs::create_symlink(folder / "real", folder / "link");
  String through = String::fromUtf8((folder / "link/inner").string());
  String resolved = String::fromUtf8(fs::canonical(folder / "real/inner").string());
  EXPECT_EQ(stringByResolvingLinkOfPath(through), resolved);
  EXPECT_EQ(stringByResolvingLinksInPath(through), resolved);
  EXPECT_EQ(stringByResolvingLinksInPath(through), resolved);  // from the cache
  // A path that does not exist keeps its missing tail.
  EXPECT_EQ(stringByResolvingLinksInPath(String::fromUtf8((folder / "link/missing/x").string())),
            String::fromUtf8(fs::canonical(folder / "real").string() + "/missing/x"));
  String missing = S(u"/no/such/path");
  EXPECT_TRUE(stringByResolvingLinkOfPath(missing).isSameObject(missing));
  fs::remove_all(folder);
}

TEST(Base64Test, EncodeDecode) {
  EXPECT_EQ(encodedBase64Data(Data{'M', 'a', 'n'}), S(u"TWFu"));
  EXPECT_EQ(encodedBase64Data(Data{'M', 'a'}), S(u"TWE="));
  EXPECT_EQ(encodedBase64Data(Data{'M'}), S(u"TQ=="));
  EXPECT_EQ(encodedBase64Data(Data{}), S(u""));
  EXPECT_EQ(encodebase64(S(u"Ma")), S(u"TWE"));
  EXPECT_EQ(decodebase64(S(u"w6k=")), S(u"\u00E9"));
  EXPECT_EQ(decodebase64(S(u"TWFu")), S(u"Man"));
  String empty = S(u"");
  EXPECT_TRUE(decodebase64(empty).isSameObject(empty));
  EXPECT_TRUE(decodebase64(S(u"AAAA")).isNull());  // first byte is 0
  EXPECT_EQ(decodedBase64Data(S(u"TWE=")), (Data{'M', 'a'}));
  EXPECT_EQ(decodedBase64Data(S(u"TQ==")), (Data{'M'}));
  EXPECT_FALSE(decodedBase64Data(S(u"")));
  for (size_t n = 1; n < 40; ++n) {
    Data data(n);
    for (size_t i = 0; i < n; ++i) data[i] = static_cast<uint8_t>(i * 37 + n);
    EXPECT_EQ(decodedBase64Data(encodedBase64Data(data)), data) << n;
  }
  EXPECT_TRUE(isBase64String(S(u"TWFu+/9 \n")));
  EXPECT_FALSE(isBase64String(S(u"TWE=")));
  EXPECT_FALSE(isBase64String(S(u"  \n")));
  EXPECT_FALSE(isBase64String(S(u"TW-u")));
  EXPECT_EQ(hexStringValue(Data{0x00, 0xAB, 0x7F}), S(u"00ab7f"));
  EXPECT_EQ(hexStringValue(Data{}), S(u""));
}

}  // namespace
}  // namespace norvane::files
