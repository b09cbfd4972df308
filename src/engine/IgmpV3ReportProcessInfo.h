#pragma once

#include "model/Types.h"
#include "platform/kiv/Attribute.h"
#include "platform/zornet/IpAddr.h"

namespace Igmp {

/// The state of one version 3 report in the making, or of a chain of reports that answers one general query.
class IgmpV3ReportProcessInfo : public Kiv::PtrInterface {
  public:
    static Ptr<IgmpV3ReportProcessInfo> IgmpV3ReportProcessInfoIs() { return new IgmpV3ReportProcessInfo; }

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3ReportProcessInfo>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    /// A record was cut, or a walk over the groups is to resume at the bookmark.
    bool useBookMark() const { return useBookMark_; }
    void useBookMarkIs( bool value ) { useBookMark_ = value; }
    /// The first source that did not fit, or the group at which the next report of a chain begins.
    Zornet::IpAddr const& bookMarkSourceIp() const { return bookMarkSourceIp_; }
    void bookMarkSourceIpIs( Zornet::IpAddr const& addr ) { bookMarkSourceIp_ = addr; }
    /// The part of a general query's first delay that its further reports may still spend.
    Seconds responseDelayRemaining() const { return responseDelayRemaining_; }
    void responseDelayRemainingIs( Seconds span ) { responseDelayRemaining_ = span; }
    /// Group records in the packet, a cut one included.
    U32 numGroups() const { return numGroups_; }
    void numGroupsInc( U32 n ) { numGroups_ += n; }
    /// False once a record could not be written whole.
    bool recordComplete() const { return recordComplete_; }
    void recordCompleteIs( bool value ) { recordComplete_ = value; }
    /// A later report is wanted.
    bool scheduleTimer() const { return scheduleTimer_; }
    void scheduleTimerIs( bool value ) { scheduleTimer_ = value; }

    /// Everything as new, but for responseDelayRemaining().
    void resetValues();

  private:
    IgmpV3ReportProcessInfo() = default;

    bool useBookMark_ = false;
    bool recordComplete_ = true;
    bool scheduleTimer_ = false;
    U32 numGroups_ = 0;
    Zornet::IpAddr bookMarkSourceIp_;
    Seconds responseDelayRemaining_ = 0.0;
};

} // namespace Igmp
