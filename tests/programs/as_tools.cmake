# The program in daily use: standard input, full disks, notes, numbers at the ends of the range.

# note(name pattern): beside the report this note stands on the error stream.
function(note name pattern)
  set_property(TEST programs/${name} APPEND PROPERTY ENVIRONMENT "NOTE=${pattern}")
endfunction()

# full(name command...): a report for a full disk is told by a line on the error stream.
function(full name)
  run(${name} 1 "^[a-z ]+: the report cannot be written: No space left" - sh -c "\"$@\" > /dev/full" sh ${ARGN})
endfunction()

# input(name file): what the program finds on standard input.
function(input name file)
  set_property(TEST programs/${name} APPEND PROPERTY ENVIRONMENT "INPUT=${file}")
endfunction()

set(arguments_outliers --deviation 9)
foreach(program curve outliers flatness align simulate)
  set(more ${arguments_${program}})
  set(start ${tessarn} ${program})
  set(shown "tessarn ${program}")
  if(program STREQUAL simulate)
    set(start $<TARGET_FILE:simulate>)
    set(shown simulate)
  endif()
  set(good ${dir}/good_${program}.csv)
  if(program STREQUAL align)
    list(PREPEND more ${good})
  endif()
  run(${program}_version 0 "^${shown} \\(Tessarn [0-9]+\\.[0-9]+\\.[0-9]+\\)$" - ${start} --version)
  full(${program}_full_help ${start} --help)
  if(NOT program STREQUAL simulate)
    full(${program}_full_disk ${start} ${good} ${more})
    run(${program}_input 0 "^standard input, [0-9]+ points" - ${start} - ${more})
    input(${program}_input ${good})
    run(${program}_bad_input 2 "^tessarn ${program}: standard input:3: expected . columns, found " - ${start} -
        ${more})
    input(${program}_bad_input ${dir}/columns_${program}.csv)
    file(READ ${good} points)
    string(REPLACE "," ";" points "${points}")
    file(WRITE ${dir}/semicolons_${program}.csv "${points}")
    run(${program}_separator 0 "^semicolons_${program}.csv, [0-9]+ points" - ${start} ${dir}/semicolons_${program}.csv ${more})
    # A disk that is full when the picture is written.
    add_test(NAME programs/${program}_full_link COMMAND ln -sf /dev/full ${dir}/full_${program}.svg.part)
    set_tests_properties(programs/${program}_full_link PROPERTIES FIXTURES_SETUP full_${program})
    add_test(NAME programs/${program}_full_picture COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run.sh 1 "no picture|cannot be written" -
             ${start} ${good} ${more} --plot ${dir}/full_${program}.svg)
    set_tests_properties(programs/${program}_full_picture PROPERTIES FIXTURES_REQUIRED full_${program})
  endif()
endforeach()

# A disk that gets full while the picture is written: gnuplot does not notice, and leaves the beginning.
file(MAKE_DIRECTORY ${dir}/half)
file(WRITE ${dir}/half/gnuplot "#!/bin/sh\nsed -n \"s/^set output '\\(.*\\)'/\\1/p\" | { read -r file; echo '<svg>' > \"$file\"; }\n")
file(CHMOD ${dir}/half/gnuplot PERMISSIONS OWNER_READ OWNER_EXECUTE OWNER_WRITE)
run(half_a_picture 1 "^tessarn curve: .*half.svg cannot be written as a whole" ${dir}/half.svg
    env "PATH=${dir}/half:$ENV{PATH}" ${tessarn} curve ${data}/water.csv --plot ${dir}/half.svg)

run(simulate_help 0 "^Usage: .*simulate .*folder" - $<TARGET_FILE:simulate> --help)
run(simulate_no_folder 2 "^simulate: folder is required" - $<TARGET_FILE:simulate>)
run(simulate_nowhere 2 "^simulate: /nonexistent/simulated_profile.csv: cannot be written: No such file" -
    $<TARGET_FILE:simulate> /nonexistent)
file(MAKE_DIRECTORY ${dir}/full)
file(CREATE_LINK /dev/full ${dir}/full/simulated_plate.csv SYMBOLIC)
run(simulate_full 2 "^simulate: .*/full/simulated_plate.csv: cannot be written: No space left" - $<TARGET_FILE:simulate>
    ${dir}/full)

# Points that are marked are told beside the report, which may go to a file.
note(profile "^tessarn curve: note: 4 points left out .marked by x = -1.$")

# What is found on the curve: the true one has four zeros, three extremes and two inflections.
function(found name pattern)
  run(profile_${name} 0 "^${pattern}$" - ${tessarn} curve ${dir}/simulated_profile.csv -m 5)
  note(profile_${name} "4 points left out")
endfunction()
found(zero "x = 16.6509168763")
found(minimum "minimum  at x = 13.7550835, p.x. = -1.513741973")
found(inflection "x = 8.171632471, p.x. = 1.345888031")
found(sharpest "largest curvature at x = -14.97345584: radius 2.75701371, centre .-14.506057, -2.17326946.")

# Far from 0 the curve keeps its digits, where the powers of x cancel each other.
file(WRITE ${dir}/far.csv "1000000,999.8395\n1000004,999.9720\n1000010,999.7026\n1000015,999.1026\n1000020,998.2071\n\
1000022,997.7735\n1000025,997.0479\n1000030,995.6502\n")
run(far 0 "^maximum  at x = 1000004.011, p.x. = 999.9721213$" - ${tessarn} curve ${dir}/far.csv -m 5)

# A curve that touches 0 without crossing it.
file(WRITE ${dir}/touching.csv "1,0\n0,1\n2,1\n3,4\n-1.5,6.25\n")
run(touching 0 "^  a zero of multiplicity 2$" - ${tessarn} curve ${dir}/touching.csv -m 3)

# Numbers at the ends of the range: no report ends well with one that is not finite.
file(WRITE ${dir}/huge.csv "0,1e308\n1,-1e308\n2,1e308\n3,1.5e308\n4,1\n")
file(WRITE ${dir}/wide.csv "-1e308,1\n0,2\n1e308,5\n1.5e308,6\n")
file(WRITE ${dir}/large.csv "0,1e200\n1,3e200\n2,-7e200\n3,1e200\n")
foreach(name huge wide large)
  foreach(kind "" --odd)
    run(${name}${kind} 1 "^tessarn curve: .* is not finite: the numbers are too large" ${dir}/${name}${kind}.svg
        ${tessarn} curve ${dir}/${name}.csv -m 3 ${kind} --plot ${dir}/${name}${kind}.svg)
  endforeach()
endforeach()
run(far_value 1 "^tessarn curve: the curve at x = 1e.300 is not finite" - ${tessarn} curve ${data}/water.csv
    -m 5 --at 1e300)
bad(curve value "--at: 'nan' is not a finite number" ${data}/water.csv --at 1,nan)

# A straight line has no radius.
file(WRITE ${dir}/zero.csv "0,0\n1,0\n2,0\n3,0\n")
file(WRITE ${dir}/slope.csv "0,1\n1,3\n2,5\n3,7\n")
foreach(name zero slope)
  run(straight_${name} 0 " none .straight.$" - ${tessarn} curve ${dir}/${name}.csv -m 2)
endforeach()
file(WRITE ${dir}/cubic.csv "-2,-8\n-1.5,-3.375\n-0.5,-0.125\n0,0\n0.5,0.125\n1.5,3.375\n2,8\n")
run(straight_point 0 "^ +0 .* none .straight.$" - ${tessarn} curve ${dir}/cubic.csv -m 4 --odd --at 0,1)

# What determines no rotation, each beside a set that does.
file(WRITE ${dir}/same.csv "0.1,0.2,0.3\n0.1,0.2,0.3\n0.1,0.2,0.3\n0.1,0.2,0.3\n")
file(WRITE ${dir}/thin_line.csv "0,0,0\n0.1,0.2,0.3\n0.2,0.4,0.6\n0.7,1.4,2.1\n")
file(WRITE ${dir}/far_line.csv "1e6,1e6,1e6\n1000000.1,1000000.2,1000000.3\n1000000.2,1000000.4,1000000.6\n1000000.7,1000001.4,1000002.1\n")
file(WRITE ${dir}/near_line.csv "0,0,0\n1,1e-8,0\n2,0,0\n5,0,1e-8\n")
foreach(name same thin_line far_line near_line)
  set(reason "on one line")
  if(name STREQUAL same)
    set(reason "all the same")
  endif()
  foreach(other good_align ${name})
    run(align_${name}_${other} 1 "^tessarn align: the points of ${name}.csv .*${reason}, they determine no rotation"
        ${dir}/align_${name}.png ${tessarn} align ${dir}/${other}.csv ${dir}/${name}.csv --plot ${dir}/align_${name}.png)
  endforeach()
endforeach()
run(flat_same 1 "^tessarn flatness: all points are the same" - ${tessarn} flatness ${dir}/same.csv)
run(flat_far_line 1 "^tessarn flatness: the points lie on one line" - ${tessarn} flatness ${dir}/far_line.csv)
file(WRITE ${dir}/tetrahedron.csv "1,1,1\n1,-1,-1\n-1,1,-1\n-1,-1,1\n")
file(WRITE ${dir}/tetrahedron_mirrored.csv "1,1,-1\n1,-1,1\n-1,1,1\n-1,-1,-1\n")
run(align_several 1 "^tessarn align: several rotations fit the points equally well" - ${tessarn} align
    ${dir}/tetrahedron.csv ${dir}/tetrahedron_mirrored.csv)

# A mirrored set is told, and no other: neither a flat one, nor one of any size.
file(WRITE ${dir}/body.csv "0,0,0\n3,0,0\n0,2,0\n0,0,1\n")
file(WRITE ${dir}/body_mirrored.csv "5,5,5\n5,8,5\n7,5,5\n5,5,6\n")
run(align_mirrored 0 "^reflected +0 root mean square: a reflection would fit better" - ${tessarn} align
    ${dir}/body.csv ${dir}/body_mirrored.csv)
note(align_mirrored "a reflection would fit better than the rotation")
file(WRITE ${dir}/flat.csv "0,1,0\n-3,8,0\n-3,-4,0\n-3,3,0\n")
file(WRITE ${dir}/flat_turned.csv "-0.8660254037844386,0.5000000000000001,7\n-8.428203230275509,1.4019237886466849,7\n\
1.964101615137754,-4.598076211353316,7\n-4.098076211353316,-1.0980762113533156,7\n")
run(align_flat 0 "^angle +60 degrees" - ${tessarn} align ${dir}/flat.csv ${dir}/flat_turned.csv)
foreach(size 300 -300)
  file(WRITE ${dir}/size${size}.csv "0,0,0\n3e${size},0,0\n0,2e${size},0\n0,0,1e${size}\n")
  file(WRITE ${dir}/size${size}_turned.csv "0,0,0\n0,3e${size},0\n-2e${size},0,0\n0,0,1e${size}\n")
  run(align_size${size} 0 "^root mean square +2.54951e.?${size} before, 0 after" -
      ${tessarn} align ${dir}/size${size}.csv ${dir}/size${size}_turned.csv)
endforeach()
file(WRITE ${dir}/huge_space.csv "1e308,0,0\n-1e308,1e308,0\n0,1e308,1.5e308\n1e308,1e308,-1e308\n")
run(align_huge 1 "^tessarn align: .*(too far apart|too large) for double precision" - ${tessarn} align ${dir}/huge_space.csv
    ${dir}/good_align.csv)
run(flat_huge 0 "^flatness .ISO 1101. +7.04361e.307$" - ${tessarn} flatness ${dir}/huge_space.csv)
file(WRITE ${dir}/too_huge.csv "1.7e308,1.7e308,1.7e308\n1.7e308,-1.7e308,-1.7e308\n-1.7e308,1.7e308,-1.7e308\n\
-1.7e308,-1.7e308,1.7e308\n")
run(flat_too_huge 1 "^tessarn flatness: the points are too far apart for double precision" - ${tessarn} flatness
    ${dir}/too_huge.csv)
run(flat_several 0 "^The data do not determine the result: others fit as well" - ${tessarn} flatness
    ${dir}/tetrahedron.csv)
run(align_two_inputs 2 "^tessarn align: standard input can be one of the two sets" - ${tessarn} align - -)

# A list that the fits cannot hold, an upright line, and what may be asked for.
run(outliers_huge 1 "^tessarn outliers: the largest coordinate is 1.5e.308" - ${tessarn} outliers ${dir}/huge.csv --deviation 1)
file(WRITE ${dir}/upright.csv "5,1\n5,2\n5,3\n5,4\n5,5\n-1,0\n")
run(outliers_upright 0 "^mean direction +.0, 1., 90 degrees" - ${tessarn} outliers ${dir}/upright.csv --deviation 9)
note(outliers_upright "^tessarn outliers: note: 1 point left out .marked by x = -1.$")
bad(outliers negative "--deviation: must be positive$" ${dir}/good_outliers.csv --deviation -3)
bad(outliers not_a_deviation "--deviation: 'nan' is not a number$" ${dir}/good_outliers.csv --deviation nan)
bad(outliers vanishing "--deviation: must lie between 1e-150 and 1e150$" ${dir}/good_outliers.csv --deviation 1e-200)
bad(outliers no_direction "--direction: 0,0 is no direction" ${dir}/good_outliers.csv --deviation 1 --direction 0,0)

# Pictures of what has no extent.
file(WRITE ${dir}/level.csv "0,7e150\n1,7e150\n2,7e150\n3,7e150\n")
foreach(name level zero)
  run(picture_${name} 0 "points used" ${dir}/${name}_curve.png ${tessarn} curve ${dir}/${name}.csv -m 1
      --plot ${dir}/${name}_curve.png)
endforeach()
run(picture_flat_list 0 "^mean direction" ${dir}/zero_list.png ${tessarn} outliers ${dir}/zero.csv --deviation 1
    --plot ${dir}/zero_list.png)
run(picture_no_distance 0 "^angle" ${dir}/no_distance.png ${tessarn} align ${dir}/tetrahedron.csv
    ${dir}/tetrahedron.csv --plot ${dir}/no_distance.png)

# Many points: every picture stays small and says what it draws.
set(many ${dir}/many)
add_test(NAME programs/many COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/many_points.sh ${many})
set_tests_properties(programs/many PROPERTIES FIXTURES_SETUP many)
function(many name pattern)
  run(many_${name} 0 "${pattern}" ${many}_${name}.svg ${ARGN} --plot ${many}_${name}.svg)
  set_tests_properties(programs/many_${name} PROPERTIES FIXTURES_REQUIRED many)
  set_property(TEST programs/many_${name} APPEND PROPERTY ENVIRONMENT "MOST=4000000")
endfunction()
many(flatness "^the means of 200000 points in [0-9]+ spots" ${tessarn} flatness ${many}_surface.csv)
many(align "^one of 40 points of each set drawn" ${tessarn} align ${many}_space.csv ${many}_surface.csv)
many(outliers "^remaining points .[0-9]+ of [0-9]+ drawn." ${tessarn} outliers ${many}_curve.csv --deviation 40)
many(curve "^residuals in 400 columns" ${tessarn} curve ${many}_curve.csv -m 3)
