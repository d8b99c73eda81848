#pragma once

namespace Benchmarks {

// What the bare program connects to.
class BareHost {
  public:
    static constexpr const char* kProgram = "quorvane-bare-program";

    BareHost();
    ~BareHost();
    BareHost(const BareHost&) = delete;
    BareHost& operator=(const BareHost&) = delete;

    void awaitProgram();
    // It rests once it has connected.
    void awaitRest() const noexcept {}

  private:
    int listener_;
    int program_ = -1;
};

} // namespace Benchmarks
