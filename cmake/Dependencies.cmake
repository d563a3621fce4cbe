# Imported targets for the Debian libraries the subsystems link against.
# Each is optional here; a subsystem that needs one names it in its DEPS.
find_package(PkgConfig REQUIRED)

pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-uc icu-i18n)
pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)
pkg_check_modules(FMT REQUIRED IMPORTED_TARGET fmt)
pkg_check_modules(MINIZIP IMPORTED_TARGET minizip)
pkg_check_modules(EXPAT IMPORTED_TARGET expat)
pkg_check_modules(PLIST IMPORTED_TARGET libplist-2.0)
pkg_check_modules(MSGPACK IMPORTED_TARGET msgpack)
pkg_check_modules(LUA IMPORTED_TARGET lua54)
pkg_check_modules(VIPS IMPORTED_TARGET vips-cpp)
pkg_check_modules(EXIF IMPORTED_TARGET libexif)
pkg_check_modules(FFMPEG IMPORTED_TARGET libavformat libavcodec libswscale libavutil)
pkg_check_modules(GIO IMPORTED_TARGET gio-2.0)
pkg_check_modules(SYSTEMD IMPORTED_TARGET libsystemd)
find_package(nlohmann_json 3 QUIET)
