// Boost's assertion handler, for all programs that link this library. Boost's assertions stay on:
// one that fails in a segment that a peer has damaged throws std::logic_error out of that access
// instead of ending the process.
#include <boost/assert.hpp>
#include <stdexcept>

namespace boost {

void assertion_failed(const char* expression, const char*, const char*, long) {
    throw std::logic_error(expression);
}

void assertion_failed_msg(const char* expression, const char*, const char*, const char*, long) {
    throw std::logic_error(expression);
}

}  // namespace boost
