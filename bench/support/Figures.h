#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Bench {

/// The bound that a median is held against.
struct Wanted {
    double bound;
    bool atLeast; ///< otherwise at most

    bool met( double value ) const { return atLeast ? value >= bound : value <= bound; }
};
constexpr Wanted
atLeast( double bound ) {
    return { bound, true };
}
constexpr Wanted
atMost( double bound ) {
    return { bound, false };
}

/// What one benchmark program has measured: named samples with their unit, printed as a table of medians and
/// spreads and, where asked, written as JSON. A benchmark tells whether a bound is met and never fails over
/// it: the machine may be busy.
class Figures {
  public:
    void
    add( std::string const& name, std::string const& unit, std::vector<double> samples,
         std::optional<Wanted> wanted = {} );
    void print( std::string_view title ) const;
    bool anyMissed() const;
    /// Raises std::runtime_error where the file cannot be written.
    void writeJson( std::string const& path ) const;

  private:
    struct Figure {
        std::string name;
        std::string unit;
        std::vector<double> samples; ///< ascending
        std::optional<Wanted> wanted;
        double median() const { return samples[samples.size() / 2]; }
        bool isMissed() const { return wanted && !wanted->met( median() ); }
        std::string verdict() const;
    };
    std::vector<Figure> figures_;
};

/// How thoroughly to measure.
struct Effort {
    unsigned runs = 5;
    bool quick = false; ///< smaller loads where a figure does not hang on the load
};

/// Seconds of the steady clock that `work` takes.
double secondsOf( std::function<void()> const& work );
/// The same of this process's processor time, which does not go on while others have the processor.
double processorSecondsOf( std::function<void()> const& work );
/// A(i) / B(i) of two series measured in turn.
std::vector<double> ratios( std::vector<double> const& a, std::vector<double> const& b );

/// The main program of a benchmark: `--json FILE`, `--runs N` (default 5), `--quick` (3 runs, smaller loads),
/// then `measure`, then the table. Returns the exit status: 3 where a figure is not what is wanted, 2 for
/// wrong usage, 1 where measuring failed, with the reason.
int
run( int argc, char** argv, std::string_view title,
     std::function<void( Figures&, Effort const& )> const& measure );

} // namespace Bench
