# Every warning flag of the project. The presets make them errors; another compiler's new warning
# stops nobody else.
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
