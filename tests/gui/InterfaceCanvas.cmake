# The block view's test: it needs a display, so it runs under a virtual one,
# as a single test (listing its cases would already need the display).
find_package(wxWidgets 3.2 REQUIRED COMPONENTS gl adv core base)
include(${wxWidgets_USE_FILE})
add_executable(test_InterfaceCanvas ${CMAKE_CURRENT_SOURCE_DIR}/gui/test_InterfaceCanvas.cpp)
target_include_directories(test_InterfaceCanvas PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/support)
target_link_libraries(test_InterfaceCanvas PRIVATE sarvo_gui GTest::gtest sarvo_warnings)
add_test(NAME gui_InterfaceCanvas
         COMMAND xvfb-run -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:test_InterfaceCanvas>
         WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
set_tests_properties(gui_InterfaceCanvas PROPERTIES LABELS gui TIMEOUT 300)
