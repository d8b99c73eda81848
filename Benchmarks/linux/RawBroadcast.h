#pragma once

#include <cstddef>
#include <vector>

namespace Benchmarks {

// Sends one packet of a port's small message to each of kRawClients.
class RawSender {
  public:
    RawSender();
    ~RawSender();
    RawSender(const RawSender&) = delete;
    RawSender& operator=(const RawSender&) = delete;

    void awaitClients(std::size_t count);
    void broadcast();

  private:
    int listener_;
    std::vector<int> clients_;
};

void allowManyDescriptors();

} // namespace Benchmarks
