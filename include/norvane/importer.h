/*
 * The metadata importer plug-in interface.
 *
 * An importer is a bundle folder NAME.mdimporter that holds an XML
 * Info.plist and a shared object. The shared object exports one C function
 * per factory; Info.plist names them:
 *
 *   CFBundleIdentifier          a reverse-DNS identifier
 *   CFBundleExecutable          the shared object, relative to the bundle
 *   CFPlugInFactories           { factory UUID : exported function name }
 *   CFPlugInTypes               { NORVANE_IMPORTER_TYPE_ID : [factory UUID] }
 *   CFBundleDocumentTypes       [ { CFBundleTypeRole = "MDImporter",
 *                                   LSItemContentTypes = [MIME types] } ]
 *   UTExportedTypeDeclarations  [ { UTTypeTagSpecification =
 *                                   { public.filename-extension = [exts] } } ]
 *
 * A factory function is called with the plug-in type UUID and answers a new
 * instance, or NULL when it does not make that type. An instance is a
 * pointer to a pointer to a NorvaneImporterInterface (the v-table comes
 * first, so one instance can hand out several interfaces). The host asks it
 * for NORVANE_IMPORTER_INTERFACE_ID (import by path) or else
 * NORVANE_IMPORTER_URL_INTERFACE_ID (import by file URL), calls importFile
 * once per file and releases every reference it obtained.
 *
 * importFile fills the attribute dictionary through the host's functions,
 * reached from the dictionary itself (see the inline helpers below). Its
 * return value is not read: an importer that offered an interface has taken
 * the file. To signal failure that must retire the importer for the rest of
 * the process, call norvane_raise(); a C++ exception that leaves importFile
 * has the same effect.
 *
 * All strings are UTF-8 and NUL-terminated unless a length is given.
 */
#ifndef NORVANE_IMPORTER_H
#define NORVANE_IMPORTER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define NORVANE_IMPORTER_TYPE_ID "8B08C4BF-415B-11D8-B3F9-0003936726FC"
#define NORVANE_IMPORTER_INTERFACE_ID "6EBC27C4-899C-11D8-84AE-0003936726FC"
#define NORVANE_IMPORTER_URL_INTERFACE_ID "13F60F02-3622-4F35-9891-EC10E6CD08F8"

/* Opaque value owned by the host. Values made by the host functions belong
 * to the caller until handed to norvane_set or array_append, which take
 * ownership. */
typedef struct NorvaneValue NorvaneValue;

typedef struct NorvaneImporterHost {
  /* The size of this struct as the host built it; later fields are valid
   * only when they lie within it. */
  size_t size;
  NorvaneValue* (*makeString)(const char* utf8, size_t length);
  NorvaneValue* (*makeInteger)(int64_t value);
  NorvaneValue* (*makeReal)(double value);
  NorvaneValue* (*makeBoolean)(int value);
  /* Seconds since 1970-01-01T00:00:00Z. */
  NorvaneValue* (*makeDate)(double secondsSince1970);
  NorvaneValue* (*makeData)(const void* bytes, size_t length);
  NorvaneValue* (*makeUrl)(const char* utf8);
  NorvaneValue* (*makeNull)(void);
  NorvaneValue* (*makeArray)(void);
  NorvaneValue* (*makeDictionary)(void);
  /* Appends `item` to an array value; takes ownership of `item`. */
  void (*arrayAppend)(NorvaneValue* array, NorvaneValue* item);
  /* Sets `key` of a dictionary value, replacing an old value; takes
   * ownership of `value`. */
  void (*dictionarySet)(NorvaneValue* dictionary, const char* key, NorvaneValue* value);
  /* Frees a value that was not handed over. */
  void (*freeValue)(NorvaneValue* value);
  /* Marks the running import as failed with an exception name and reason. */
  void (*raise)(NorvaneValue* attributes, const char* name, const char* reason);
} NorvaneImporterHost;

/* The attribute dictionary handed to importFile. */
typedef struct NorvaneAttributes {
  const NorvaneImporterHost* host;
  NorvaneValue* dictionary;
} NorvaneAttributes;

typedef struct NorvaneImporterInterface {
  void* reserved;
  /* Stores a reference to the interface `interfaceID` in *out and answers
   * 0, or stores NULL and answers nonzero. A stored reference counts as one
   * reference to release. */
  int32_t (*queryInterface)(void* self, const char* interfaceID, void** out);
  uint32_t (*addRef)(void* self);
  uint32_t (*release)(void* self);
  /* `contentType` is the file's lower-case MIME type; `pathOrUrl` is the
   * absolute path, or a file URL for the URL interface. */
  int32_t (*importFile)(void* self, NorvaneAttributes* attributes, const char* contentType, const char* pathOrUrl);
} NorvaneImporterInterface;

/* The signature of the functions named in CFPlugInFactories. */
typedef void* (*NorvaneImporterFactory)(const char* typeID);

/* Helpers for importers. */

static inline void norvane_set(NorvaneAttributes* attributes, const char* key, NorvaneValue* value) {
  attributes->host->dictionarySet(attributes->dictionary, key, value);
}

static inline void norvane_set_string(NorvaneAttributes* attributes, const char* key, const char* utf8, size_t length) {
  norvane_set(attributes, key, attributes->host->makeString(utf8, length));
}

static inline void norvane_set_integer(NorvaneAttributes* attributes, const char* key, int64_t value) {
  norvane_set(attributes, key, attributes->host->makeInteger(value));
}

static inline void norvane_raise(NorvaneAttributes* attributes, const char* name, const char* reason) {
  attributes->host->raise(attributes->dictionary, name, reason);
}

#ifdef __cplusplus
}
#endif

#endif /* NORVANE_IMPORTER_H */
