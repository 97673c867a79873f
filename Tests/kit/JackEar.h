// Whether the program sounds at a JACK server.
#pragma once

#include <string>

namespace velto::kit {

// Listens for 200 ms to the outputs of the client `client` at the server `server`, in a process of
// its own, because the JACK library can hang. False if there is no such client, or it is silent.
[[nodiscard]] bool jackSounds(const std::string& server, const std::string& client);

} // namespace velto::kit
