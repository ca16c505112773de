# The environment of every test. CTest reads this file after the test
# programs have listed their tests (see CMakeLists.txt); a program that is
# not built yet has no list, and CTest reports it as not built.
# LECTERN_TEST_HOST: the application under test never checks for updates by itself.
set(lectern_test_environment "TZ=UTC;LC_ALL=C.UTF-8;LECTERN_TEST_HOST=1")
foreach(tests IN ITEMS lectern_unit_tests lectern_web_tests)
  if(${tests})
    set_tests_properties(${${tests}} PROPERTIES ENVIRONMENT "${lectern_test_environment}")
  endif()
endforeach()
if(lectern_gui_tests)
  set_tests_properties(${lectern_gui_tests} PROPERTIES ENVIRONMENT "${lectern_test_environment};GDK_BACKEND=x11")
endif()
