// What a process does that shares the segment without the library: the same types, the same
// definitions in every source file that includes Boost, and each access under the segment's lock.
#define BOOST_INTERPROCESS_ENABLE_TIMEOUT_WHEN_LOCKING
#define BOOST_INTERPROCESS_TIMEOUT_WHEN_LOCKING_DURATION_MS 1000

#include <boost/container/string.hpp>
#include <boost/container/vector.hpp>
#include <boost/interprocess/allocators/allocator.hpp>
#include <boost/interprocess/managed_shared_memory.hpp>
#include <cstdio>
#include <exception>

using namespace boost::interprocess;
template <typename T>
using Allocator = allocator<T, managed_shared_memory::segment_manager>;
using Text = boost::container::basic_string<char, std::char_traits<char>, Allocator<char>>;
using Texts = boost::container::vector<Text, Allocator<Text>>;

int main() try {
    managed_shared_memory segment(open_or_create, "CONF_AUTO_SAVE_MEM", 0x140000, nullptr,
                                  permissions(0644));
    auto* manager = segment.get_segment_manager();
    auto publish = [&] {  // keep it short and print nothing: everybody waits
        auto* object = segment.find_or_construct<Texts>("CNF_DEV_TYP_MEM")(manager);
        object->assign(1, Text("100_VOLTS_DEV_2CH", manager));
    };
    segment.atomic_func(publish);  // throws after 1 s if the lock's holder has died
} catch (const std::exception& error) {
    std::fprintf(stderr, "without_library: %s\n", error.what());
    return 1;
}
