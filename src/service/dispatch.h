// From a decoded request to the service object and back.
#pragma once

#include <optional>

#include "norvane/wire/message.h"
#include "norvane/wire/operations.h"
#include "service/norvane_helper.h"

namespace norvane::service {

// Runs one request that arrived on `channel` (ImExportXPC for listener
// connections, ServiceObject for the named connection) and answers its
// reply, or nullopt when none goes back: "terminate" (which never returns),
// and requests sent without a handler.
//
// Unknown operations, operations the channel does not offer and wrong
// arguments are refused with an error reply and do no work. A reply-carrying
// request without handler does no work, except the script requests. An
// exception that leaves a request is logged and answered as a failure.
std::optional<wire::Reply> handleRequest(NorvaneHelper& helper, const wire::Request& request, wire::Protocol channel);

}  // namespace norvane::service
