#pragma once

#include <bitset>
#include <exception>

#include "platform/kiv/String8.h"

namespace Kiv {

/// Base of what the model and the runtime raise: a message, the set of ids under which it may be expected,
/// and whether it was expected where it was raised.
class Exception : public std::exception {
  public:
    using Id = unsigned int;
    using IdBitArray = std::bitset<32>;

    Exception( String8 const& message, IdBitArray ids, bool expected )
        : message_( message ), ids_( ids ), expected_( expected ) {}

    char const* what() const noexcept override { return message_.charPtr(); }
    String8 const& message() const { return message_; }
    IdBitArray const& ids() const { return ids_; }
    bool expected() const { return expected_; }

  private:
    String8 message_;
    IdBitArray ids_;
    bool expected_;
};

/// A value outside its range, or a null pointer where one is required.
class RangeException : public Exception {
    using Exception::Exception;
};

/// A state that the runtime does not allow.
class InternalException : public Exception {
    using Exception::Exception;
};

/// A member asked for again with other parameters than those it was made with.
class NameInUseException : public Exception {
    using Exception::Exception;
};

/// Declares, for its scope, that an exception of `id` is expected. Scopes nest.
class Expect {
  public:
    explicit Expect( Exception::Id id );
    ~Expect() { current_ = outer_; }
    Expect( Expect const& ) = delete;
    Expect& operator=( Expect const& ) = delete;

    static Exception::IdBitArray current() { return current_; }

  private:
    static Exception::IdBitArray current_;
    Exception::IdBitArray outer_;
};

[[noreturn]] void throwRangeException( char const* text );
[[noreturn]] void throwRangeException( String8 const& text );
[[noreturn]] void throwInternalException( char const* text );
[[noreturn]] void throwInternalException( String8 const& text );
[[noreturn]] void throwNameInUseException( String8 const& text );

} // namespace Kiv
