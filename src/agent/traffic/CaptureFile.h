#pragma once

#include <pcap/pcap.h>

#include <memory>

#include "agent/run/RunPart.h"
#include "platform/kiv/Activity.h"

namespace Agent {

/// Writes every frame that the hosts' devices send or receive to a capture file: --pcap. It is taken at the
/// devices themselves, so that none is lost however fast they come, and can be read up to the last turn of
/// the loop at any time. A file that cannot be written any more, or is as long as it may be, ends the capture
/// and nothing else.
class CaptureFile : public RunPart, private Traffic::Listener, private Kiv::TurnEndHandler {
  public:
    /// Raises std::runtime_error where the file cannot be written.
    explicit CaptureFile( RunContext const& context );
    ~CaptureFile() override;

    ExitStatus handleEnded() override;

  private:
    using Handle = std::unique_ptr<pcap_t, decltype( &pcap_close )>;

    void handleFrame( Zornet::Device const& device, std::span<Zornet::U8 const> frame ) override;
    void handleTurnEnd() override;
    void flush();
    void fail( int error );
    void close();

    RunContext const& context_;
    Handle handle_;
    pcap_dumper_t* dumper_ = nullptr; ///< null once the capture has ended
    U64 frames_ = 0;
    U64 bytes_ = 0;        ///< length of the file
    U64 flushedBytes_ = 0; ///< of which so much is known to be written
    bool flushAsked_ = false;
    bool failed_ = false;
};

} // namespace Agent
