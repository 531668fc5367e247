// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>

namespace pavo {

class ClientRequest;
class ClientResponse;

// Hands a request to the worker and returns the response, or an empty pointer when there is none.
// The call blocks. Any thread may make it, but a worker's thread gets an empty pointer at once.
using requestFunction =
    std::function<std::shared_ptr<ClientResponse>(std::shared_ptr<ClientRequest>)>;

// The handle of one cache entry. Tokens count 0, 1, 2, ... over the whole process and are never
// reused.
using token = unsigned long long;

}  // namespace pavo
