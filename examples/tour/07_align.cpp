// Finds the motion that carries one set of points onto another, and how well they fit.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const vector3d drawn[] = {{0, 0, 0}, {40, 0, 0}, {40, 25, 0}, {20, 35, 5}, {0, 25, 0}};
  const vector3d found[] = {{12.01, 7.99, 3},
                            {46.63, 28.01, 3},
                            {34.15, 49.64, 3.01},
                            {11.81, 48.32, 8},
                            {-0.49, 29.66, 2.99}};
  const auto motion =
      tessarn::align({drawn, 5}, {found, 5});  // from the first to the second
  if (motion.state != tessarn::status::ok)
    return std::puts(tessarn::to_string(motion.state)), 1;

  const double cosine = motion.rotation.get(0, 0), sine = motion.rotation.get(0, 1);
  std::printf("turned by %.3f degrees about z\n",
              vector(cosine, sine).dirarc() * 180 / tessarn::pi);
  std::printf("moved by (%.3f, %.3f, %.3f)\n", motion.translation.x, motion.translation.y,
              motion.translation.z);
  std::printf("root mean square %.4f, worst pair %u: %.4f\n", motion.root_mean_square,
              unsigned(motion.largest_at), motion.largest_residual);

  const vector3d hole =
      motion.map({20, 12, 0});  // where a hole of the drawing is on the part
  std::printf("the hole is at (%.3f, %.3f, %.3f)\n", hole.x, hole.y, hole.z);

  picture drawing(argc, argv);
  vector from[5], to[5], carried[5];
  for (int i = 0; i < 5; ++i) {
    const vector3d image = motion.map(drawn[i]);
    from[i] = vector(drawn[i].x, drawn[i].y);
    to[i] = vector(found[i].x, found[i].y);
    carried[i] = vector(image.x, image.y);
  }
  drawing.points("drawing", {from, 5});
  drawing.points("part", {to, 5});
  drawing.points("drawing, carried onto the part", {carried, 5});
  drawing.point("hole", hole.x, hole.y);
}
