#pragma once

#include <functional>
#include <memory>

namespace pavo {

class ClientRequest;
class ClientResponse;

// Hands a request to the worker and returns its response, empty when there is none. Blocks; any
// thread, though the worker itself is answered at once and empty.
using requestFunction =
    std::function<std::shared_ptr<ClientResponse>(std::shared_ptr<ClientRequest>)>;

// The handle of one cache entry: 0, 1, 2, ... over the whole process, never reused.
using token = unsigned long long;

}  // namespace pavo
