// File types as shared-mime-info names them, through GIO.
#pragma once

#include <string>

namespace norvane::importers {

// The lower-case MIME type of the file at `path`, guessed from its name and
// its first bytes; "inode/directory" for a folder. Empty when the file does
// not exist or cannot be examined.
std::string typeIdentifierOfFileAtPath(const std::string& path);

// True when `type` is `declaredType` or a subclass of it (shared-mime-info's
// subclass relation, aliases resolved).
bool typeConformsTo(const std::string& type, const std::string& declaredType);

}  // namespace norvane::importers
