/* An importer written in plain C: it takes a file and reports its size and
 * a list of values built through the host functions. */
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include "norvane/importer.h"

typedef struct {
  const NorvaneImporterInterface* vtable;
  uint32_t references;
} CImporter;

static int32_t c_query_interface(void* self, const char* interface_id, void** out);

static uint32_t c_add_ref(void* self) {
  return __atomic_add_fetch(&((CImporter*)self)->references, 1, __ATOMIC_SEQ_CST);
}

static uint32_t c_release(void* self) {
  uint32_t left = __atomic_sub_fetch(&((CImporter*)self)->references, 1, __ATOMIC_SEQ_CST);
  if (left == 0) free(self);
  return left;
}

static int32_t c_import_file(void* self, NorvaneAttributes* attributes, const char* content_type, const char* path) {
  (void)self;
  struct stat st;
  if (stat(path, &st) != 0) return 0;
  norvane_set_integer(attributes, "kMDItemFSSize", (int64_t)st.st_size);
  const NorvaneImporterHost* host = attributes->host;
  NorvaneValue* list = host->makeArray();
  host->arrayAppend(list, host->makeString(content_type, strlen(content_type)));
  host->arrayAppend(list, host->makeBoolean(1));
  norvane_set(attributes, "Written in C", list);
  return 1;
}

static const NorvaneImporterInterface c_interface = {NULL, c_query_interface, c_add_ref, c_release, c_import_file};

static int32_t c_query_interface(void* self, const char* interface_id, void** out) {
  if (strcmp(interface_id, NORVANE_IMPORTER_INTERFACE_ID) == 0) {
    c_add_ref(self);
    *out = self;
    return 0;
  }
  *out = NULL;
  return -1;
}

__attribute__((visibility("default"))) void* CTakeFactory(const char* type_id) {
  if (!type_id || strcmp(type_id, NORVANE_IMPORTER_TYPE_ID) != 0) return NULL;
  CImporter* importer = malloc(sizeof *importer);
  if (!importer) return NULL;
  importer->vtable = &c_interface;
  importer->references = 1;
  return importer;
}
