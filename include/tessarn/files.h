/// \file
/// Reading and writing of points and matrices, for programs that want it: CSV with any usual separator, .npy, PLY, XYZ,
/// Matrix Market. Nothing of it is in the compiled library, and tessarn.h leaves it out.
///
/// \verbatim
///     read_csv             a table of numbers: any columns of a CSV file
///     read_plane_points    points of the plane: CSV, .npy                write_points
///     read_space_points    points of space: CSV, PLY, XYZ, .npy          write_points
///     read_npy             an array of any number of dimensions
///     read_matrix          a matrix of reals: Matrix Market, .npy        write_matrix
///     read_complex_matrix  a matrix of complex numbers                   write_matrix
///     parse_..., format_...  these from and into text and bytes in memory
/// \endverbatim
///
/// Every result has a `state`, which says whether the file was read or written as a whole, and if not why, with line
/// and column: `points.csv:3:5: 'x' is not a number`. No file makes a call crash, however it is cut or forged. A call
/// throws nothing but std::bad_alloc; the memory it takes grows with the file, and with the sizes that a Matrix Market
/// file announces up to matrix_options::most_entries. No digit is lost: numbers that a real cannot hold are refused,
/// and written ones read back as they were.
///
/// The locale plays no part. Several threads may read and write different files.
///
/// Needs: std::from_chars and std::to_chars for floating-point numbers, as in libstdc++ since GCC 11, in Microsoft's
/// library since Visual Studio 2019 16.4 and in libc++ since LLVM 20; and std::filesystem.
#pragma once

#include "tessarn/files/csv.h"
#include "tessarn/files/matrices.h"
#include "tessarn/files/npy.h"
#include "tessarn/files/ply.h"
#include "tessarn/files/points.h"
#include "tessarn/files/state.h"
