#!/bin/sh
# Stands before the compiler, as CMAKE_CXX_COMPILER_LAUNCHER: an object of the library that the build folder
# REUSE_OBJECTS_OF has already is copied; anything else is compiled.
object=
dependencies=
previous=
for argument in "$@"; do
  [ "$previous" = -o ] && object=$argument
  [ "$previous" = -MF ] && dependencies=$argument
  previous=$argument
done
case $object in
  */tessarn_objects*/*) made=$REUSE_OBJECTS_OF/CMakeFiles/tessarn_objects${object#*/tessarn_objects} ;;
  CMakeFiles/tessarn_objects*) made=$REUSE_OBJECTS_OF/$object ;;
  *) made= ;;
esac
[ -n "$made" ] && [ -f "$made" ] || exec "$@"
[ -z "$dependencies" ] || echo "$object:" >"$dependencies"
exec cp "$made" "$object"
