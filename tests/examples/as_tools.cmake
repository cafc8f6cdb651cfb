# The example programs in daily use: standard input, full disks, notes, numbers at the ends of the range.

# note(name pattern): beside the report this note stands on the error stream.
function(note name pattern)
  set_property(TEST examples/${name} APPEND PROPERTY ENVIRONMENT "NOTE=${pattern}")
endfunction()

# full(name command...): a report for a full disk is told by a line on the error stream.
function(full name)
  run(${name} 1 "^[a-z_]+: the report cannot be written: No space left" - sh -c "\"$@\" > /dev/full" sh ${ARGN})
endfunction()

# input(name file): what the program finds on standard input.
function(input name file)
  set_property(TEST examples/${name} APPEND PROPERTY ENVIRONMENT "INPUT=${file}")
endfunction()

set(arguments_outliers --deviation 9)
foreach(program curve_report outliers flatness align simulate)
  set(more ${arguments_${program}})
  set(good ${dir}/good_${program}.csv)
  if(program STREQUAL align)
    list(PREPEND more ${good})
  endif()
  run(${program}_version 0 "^${program} \\(Tessarn [0-9]+\\.[0-9]+\\.[0-9]+\\)$" - $<TARGET_FILE:${program}> --version)
  full(${program}_full_help $<TARGET_FILE:${program}> --help)
  if(NOT program STREQUAL simulate)
    full(${program}_full_disk $<TARGET_FILE:${program}> ${good} ${more})
    run(${program}_input 0 "^standard input, [0-9]+ points" - $<TARGET_FILE:${program}> - ${more})
    input(${program}_input ${good})
    run(${program}_bad_input 2 "^${program}: standard input:3: expected . columns, found " - $<TARGET_FILE:${program}> -
        ${more})
    input(${program}_bad_input ${dir}/columns_${program}.csv)
    file(READ ${good} points)
    string(REPLACE "," "\;" points "${points}")
    file(WRITE ${dir}/semicolons_${program}.csv "${points}")
    run(${program}_separator 2 "semicolons_${program}.csv:1: .* seem to be separated by semicolons" -
        $<TARGET_FILE:${program}> ${dir}/semicolons_${program}.csv ${more})
    # A disk that is full when the picture is written.
    add_test(NAME examples/${program}_full_link COMMAND ln -sf /dev/full ${dir}/full_${program}.svg.part)
    set_tests_properties(examples/${program}_full_link PROPERTIES FIXTURES_SETUP full_${program})
    add_test(NAME examples/${program}_full_picture COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run.sh 1 "no picture|cannot be written" -
             $<TARGET_FILE:${program}> ${good} ${more} --plot ${dir}/full_${program}.svg)
    set_tests_properties(examples/${program}_full_picture PROPERTIES FIXTURES_REQUIRED full_${program})
  endif()
endforeach()

run(simulate_help 0 "^Usage: .*simulate .*folder" - $<TARGET_FILE:simulate> --help)
run(simulate_no_folder 2 "^simulate: folder is required" - $<TARGET_FILE:simulate>)
run(simulate_nowhere 2 "^simulate: /nonexistent/simulated_profile.csv: cannot be written: No such file" -
    $<TARGET_FILE:simulate> /nonexistent)
file(MAKE_DIRECTORY ${dir}/full)
file(CREATE_LINK /dev/full ${dir}/full/simulated_plate.csv SYMBOLIC)
run(simulate_full 2 "^simulate: .*/full/simulated_plate.csv: cannot be written: No space left" - $<TARGET_FILE:simulate>
    ${dir}/full)

