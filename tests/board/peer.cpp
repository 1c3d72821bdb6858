// Another team's program: plain Boost, no lock, an object's contents changed in place. With a third
// argument it is stopped half-way, for so many milliseconds, as the scheduler may do it.
#include <boost/container/string.hpp>
#include <boost/container/vector.hpp>
#include <boost/interprocess/managed_shared_memory.hpp>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

int main(int argc, char** argv) {
    using namespace boost::interprocess;
    using Manager = managed_shared_memory::segment_manager;
    using Text =
        boost::container::basic_string<char, std::char_traits<char>, allocator<char, Manager>>;
    using Texts = boost::container::vector<Text, allocator<Text, Manager>>;

    if (argc < 3) return 2;
    managed_shared_memory segment(open_or_create, "CONF_AUTO_SAVE_MEM", 0x140000, nullptr,
                                  permissions(0644));
    auto* manager = segment.get_segment_manager();
    auto* object = segment.find_or_construct<Texts>(argv[1])(manager);
    object->resize(1, Text("DATA FROM TEST", manager));
    if (argc > 3) {
        object->at(0) = std::string(argv[2], 7).c_str();
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(argv[3])));
    }
    object->at(0) = argv[2];
}
