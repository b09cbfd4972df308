#include "lab/Capture.h"

#include <stdexcept>

namespace Lab {

WireFrame
Capture::frame( std::size_t index ) const {
    Entry const& entry = frames_.at( index );
    return { entry.time, *entry.device, { bytes_.data() + entry.begin, entry.size }, entry.lost };
}

std::vector<WireFrame>
Capture::framesFrom( std::string_view device ) const {
    std::vector<WireFrame> frames;
    for ( std::size_t i = 0; i < count(); ++i ) {
        if ( *frames_[i].device == device ) {
            frames.push_back( frame( i ) );
        }
    }
    return frames;
}

void
Capture::frameIs( WireFrame const& frame ) {
    frames_.push_back( { frame.time, &deviceName( frame.device ), bytes_.size(), frame.bytes.size(),
                         frame.lost } );
    bytes_.insert( bytes_.end(), frame.bytes.begin(), frame.bytes.end() );
}

void
Capture::clear() {
    frames_.clear();
    bytes_.clear();
}

std::string const&
Capture::deviceName( std::string_view device ) {
    auto at = devices_.find( device );
    if ( at == devices_.end() ) {
        at = devices_.emplace( device ).first;
    }
    return *at;
}

void
Capture::writePcap( std::ostream& out, PcapResolution resolution ) const {
    PcapWriter writer( out, resolution );
    for ( std::size_t i = 0; i < count(); ++i ) {
        writer.frameIs( frames_[i].time, frame( i ).bytes );
    }
}

} // namespace Lab
