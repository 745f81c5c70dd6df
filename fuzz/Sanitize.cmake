# AddressSanitizer and UndefinedBehaviorSanitizer for the library and for
# everything built here that links it (tests, examples, fuzz targets); with
# Clang and the fuzz targets, also the coverage that libFuzzer steers by.
# Included by the top-level CMakeLists.txt once the library target exists.

set(FASTINFOSET_LIBFUZZER OFF)
if(FASTINFOSET_BUILD_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
	set(FASTINFOSET_LIBFUZZER ON)
endif()

if(FASTINFOSET_SANITIZE OR FASTINFOSET_LIBFUZZER)
	# Any report ends the process, so that a test or fuzz run fails on it.
	set(FASTINFOSET_SANITIZER_FLAGS -fsanitize=address -fsanitize=undefined -fno-sanitize-recover=all)
	foreach(target FastInfoset FastInfosetItems)
		target_compile_options(${target} PUBLIC
			"$<BUILD_INTERFACE:${FASTINFOSET_SANITIZER_FLAGS};-fno-omit-frame-pointer>")
	endforeach()
	target_link_options(FastInfoset PUBLIC "$<BUILD_INTERFACE:${FASTINFOSET_SANITIZER_FLAGS}>")
endif()

if(FASTINFOSET_LIBFUZZER)
	target_compile_options(FastInfoset PRIVATE -fsanitize=fuzzer-no-link)
	target_compile_options(FastInfosetItems PRIVATE -fsanitize=fuzzer-no-link)
endif()
