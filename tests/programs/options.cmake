# Options that all commands have: how files are read, JSON, pictures; and the pages that describe them.

# Tables as other programs write them.
file(WRITE ${dir}/german.csv "Zeit (s);Weg (mm);Name\r\n0,5;1,5;A\r\n1,5;3,5;B\r\n2,5;5,5;C\r\n")
run(columns_by_name 0 "^coefficient x.1 +2" - ${tessarn} curve --columns Zeit,Weg -m 2 ${dir}/german.csv)
run(columns_by_number 0 "^coefficient x.1 +0.5" - ${tessarn} curve ${dir}/german.csv --columns 2,1 -m 2)
bad(curve column_unknown ".*/german.csv:1: no column is named 'Ort'. the columns are 'Zeit .s.', " ${dir}/german.csv
    --columns Zeit,Ort)
bad(curve columns_missing ".*/german.csv:1: expected 2 columns, found 3. --columns chooses among them" ${dir}/german.csv)
bad(curve decimal_given ".*/german.csv:2:1: '0,5' is not a number" ${dir}/german.csv --columns 1,2 --separator semicolon
    --decimal point)
string(ASCII 239 187 191 mark)
file(WRITE ${dir}/marked_utf8.csv "${mark}x;y\r\n0;1\r\n1;3\r\n2;5\r\n")
run(byte_order_mark 0 "^coefficient x.1 +2" - ${tessarn} curve ${dir}/marked_utf8.csv -m 2)
string(ASCII 255 254 utf16)
file(WRITE ${dir}/utf16.csv "${utf16}1,2\n")
bad(curve utf16 ".*/utf16.csv:1: the text is in UTF-16. save it as UTF-8" ${dir}/utf16.csv)

file(WRITE ${dir}/broken.csv "x,y\n0,1\n1,?\n2,5\n3,7\n4\n")
run(skip_bad 0 "^coefficient x.1 +2" - ${tessarn} curve ${dir}/broken.csv -m 2 --skip-bad)
note(skip_bad "^tessarn curve: note: 2 rows left out that could not be read, the first: broken.csv:3:3: '.' is not a number$")
bad(curve no_skip ".*/broken.csv:3:3: '.' is not a number" ${dir}/broken.csv)
bad(align no_skip_option ".*--skip-bad" ${dir}/good_align.csv ${dir}/good_align.csv --skip-bad)

# Weights multiply the residuals: 9 counts as 81 in the sum of squares, and a third of the deviation as 9.
file(WRITE ${dir}/weighted.csv "x,y,w,s\n0,0,1,3\n1,0,1,3\n2,11,9,1\n")
run(weights 0 "^coefficient x.0 +10.7349397590361" - ${tessarn} curve ${dir}/weighted.csv --columns x,y --weights w -m 1)
run(sigma 0 "^coefficient x.0 +(9|8.99999999999999)[0-9]*," - ${tessarn} curve ${dir}/weighted.csv --columns x,y --sigma s -m 1)
bad(curve both_weights "--sigma excludes --weights|--weights excludes --sigma" ${dir}/weighted.csv --columns x,y --weights w
    --sigma s)
file(WRITE ${dir}/no_sigma.csv "0,1,1\n1,2,0\n2,4,1\n")
bad(curve no_sigma ".*/no_sigma.csv:2: .* must be a positive standard deviation" ${dir}/no_sigma.csv --sigma 3)
file(WRITE ${dir}/no_weight.csv "0,1,1\n1,2,-1\n2,4,1\n")
bad(curve no_weight ".*/no_weight.csv:2: .* must be a weight of 0 or more" ${dir}/no_weight.csv --weights 3)

# Clouds as scanners write them.
file(WRITE ${dir}/cloud.ply "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n\
end_header\n0 0 0\n1 0 1\n0 2 4\n3 9 1\n")
file(WRITE ${dir}/cloud.xyz "0 0 0 255\n1 0 1 255\n0 2 4 255\n3 9 1 255\n")
foreach(kind ply xyz)
  run(flatness_${kind} 0 "^cloud.${kind}, 4 points" - ${tessarn} flatness ${dir}/cloud.${kind})
  run(align_${kind} 0 "^root mean square +0 before, 0 after|^largest " - ${tessarn} align ${dir}/cloud.${kind}
      ${dir}/good_align.csv)
endforeach()
file(WRITE ${dir}/cut.ply "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n\
end_header\n0 0 0\n")
bad(flatness cut_ply ".*/cut.ply: the file ends before the elements" ${dir}/cut.ply)

# Every kind of picture of every command.
set(input_curve ${data}/water.csv)
set(input_align ${dir}/simulated_coil_a.csv ${dir}/simulated_coil_b.csv)
set(input_flatness ${dir}/simulated_plate.csv)
set(input_outliers ${dir}/simulated_scan.csv --deviation 2)
foreach(program curve align flatness outliers)
  foreach(kind svg png pdf)
    run(${program}_${kind} 0 "simulated|water.csv" ${dir}/every_${program}.${kind} ${tessarn} ${program} ${input_${program}}
        --plot ${dir}/every_${program}.${kind})
  endforeach()
endforeach()

run(help 0 "^  flatness +Reports how flat" - ${tessarn} --help)
run(version 0 "^tessarn .Tessarn [0-9]+.[0-9]+.[0-9]+.$" - ${tessarn} --version)
run(no_command 2 "^tessarn: A subcommand is required" - ${tessarn})
run(unknown_command 2 "^tessarn: " - ${tessarn} polish)
run(exit_codes_told 0 "^Exit codes: 0 " - ${tessarn} curve --help)

add_test(NAME programs/pages COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/pages_test.py ${tessarn}
         ${PROJECT_BINARY_DIR}/programs/pages $<TARGET_FILE:tessarn-selfcheck>
         ${PROJECT_SOURCE_DIR}/selfcheck/tessarn-selfcheck.1)
add_test(NAME programs/json COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/json_test.py ${tessarn} ${data} ${dir})
add_test(NAME programs/progress COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/progress_test.py ${tessarn}
         ${data}/water.csv)
add_library(rounding_upward MODULE rounding_upward.cpp)
add_test(NAME programs/selfcheck COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/selfcheck_test.py ${tessarn}
         $<TARGET_FILE:tessarn-selfcheck> $<TARGET_FILE:rounding_upward>)
add_test(NAME programs/page_examples COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/page_examples.py ${tessarn}
         ${PROJECT_SOURCE_DIR} ${dir}/page)
set_tests_properties(programs/json PROPERTIES FIXTURES_REQUIRED simulated)
