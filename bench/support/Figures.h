#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Bench {

/// What one benchmark program has measured: named samples with their unit, printed as a table of medians and
/// spreads and, where asked, written as JSON.
class Figures {
  public:
    void add( std::string const& name, std::string const& unit, std::vector<double> samples );
    void print( std::string_view title ) const;
    /// Raises std::runtime_error where the file cannot be written.
    void writeJson( std::string const& path ) const;

  private:
    struct Figure {
        std::string name;
        std::string unit;
        std::vector<double> samples; ///< ascending
        double median() const { return samples[samples.size() / 2]; }
    };
    std::vector<Figure> figures_;
};

/// Seconds of the steady clock that `work` takes.
double secondsOf( std::function<void()> const& work );
/// A(i) / B(i) of two series measured in turn.
std::vector<double> ratios( std::vector<double> const& a, std::vector<double> const& b );

/// The main program of a benchmark: `--json FILE` and `--runs N` (default 5), then `measure`, then the table.
/// Returns the exit status: 2 for wrong usage, 1 where measuring failed, with the reason.
int
run( int argc, char** argv, std::string_view title,
     std::function<void( Figures&, unsigned runs )> const& measure );

} // namespace Bench
