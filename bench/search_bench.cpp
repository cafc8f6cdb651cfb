// The highest bend of a curve, its inverse function, and moving it along x.
#include <Eigen/Dense>

#include <array>

#include "inputs.h"
#include "plain/curve.h"

namespace bench {

namespace {

void set(binom& p, const values& c) {
  p.create(tessarn::slong(c.size()));
  for (std::size_t k = 0; k < c.size(); ++k) p.set(tessarn::slong(k), c[k]);
}

// The coefficients of the derivative of order k.
values derivative(values c, int k) {
  for (; k > 0; --k) {
    for (std::size_t i = 1; i < c.size(); ++i) c[i - 1] = double(i) * c[i];
    c.pop_back();
  }
  return c;
}

template <std::size_t N>
double horner(const std::array<double, N>& c, double x) {
  double s = c[N - 1];
  for (std::size_t k = N - 1; k-- > 0;) s = s * x + c[k];
  return s;
}
template <std::size_t N>
std::array<double, N> fixed(const values& c) {
  std::array<double, N> r;
  std::copy(c.begin(), c.end(), r.begin());
  return r;
}

// ---------------------------------------------------------------------------- the highest bend

// A curve whose curvature has its extreme point just below 1, and no other one from 0 on.
struct bend_inputs {
  explicit bend_inputs(long size) : n(size), step(1 / double(size)), eps(step * 1e-3) {
    for (int i = 0; i < rotation; ++i) {
      c.push_back(curve_with_bend(before_one(step, i)));
      ours.emplace_back();
      set(ours.back(), c.back());
      plain.push_back({c.back()});
    }
  }
  long n;
  double step, eps;
  static constexpr int rotation = 3;
  std::vector<values> c;
  std::vector<binom> ours;
  std::vector<plain::poly> plain;
};

void add_highest_bend(long n) {
  row<bend_inputs> r("find_high_hpoint_arc by samples", n, {(4 + 3 * (5 + 4 + 3) + 18.0) * double(n), 0});
  r.agree({1e-4});  // the bracket that is left is a tenth of a step at most
  r.ours([](bend_inputs& in, int i) { return in.ours[std::size_t(i)].find_high_hpoint_arc(0, 1, in.step, in.eps); });
  // Each change of the sign of f''' (1 + f'^2) - 3 f' f''^2 halved until it is found, the highest of all kept.
  r.peer("other", "Horner scan, bisection", [](bend_inputs& in, int i) {
    const values& c = in.c[std::size_t(i)];
    const auto d1 = fixed<5>(derivative(c, 1));
    const auto d2 = fixed<4>(derivative(c, 2));
    const auto d3 = fixed<3>(derivative(c, 3));
    const auto slope = [&](double x) {
      const double f1 = horner(d1, x), f2 = horner(d2, x), f3 = horner(d3, x);
      return f3 * (1 + f1 * f1) - 3 * f1 * f2 * f2;
    };
    double best = -1, highest = 0, before = slope(0);
    for (double x = 0; x < 1; x += in.step) {
      const double next = slope(x + in.step);
      if (before * next < 0) {
        double a = x, b = x + in.step;
        while (b - a > in.eps) {
          const double middle = (a + b) / 2;
          (before * slope(middle) < 0 ? b : a) = middle;
        }
        const double f1 = horner(d1, a), s = 1 + f1 * f1;
        const double height = std::fabs(horner(d2, a)) / (s * std::sqrt(s));
        if (height > highest) {
          highest = height;
          best = (a + b) / 2;
        }
      }
      before = next;
    }
    return best;
  });
  if (n <= 1000)
    r.plain([](bend_inputs& in, int i) {
      return plain::find_high_hpoint_arc(in.plain[std::size_t(i)], 0, 1, in.step, in.eps);
    });
}

// ---------------------------------------------------------------------------- the inverse function

// Rising curves on [0, 1], sampled in n steps.
struct inverse_inputs {
  explicit inverse_inputs(long size) : n(size), step(1 / double(size)) {
    for (int i = 0; i < rotation; ++i) {
      c.push_back({0.25, 0.5, 0.125 * (i + 1), 0.0625});
      ours.emplace_back();
      set(ours.back(), c.back());
      plain.push_back({c.back()});
    }
  }
  long n;
  double step;
  static constexpr int rotation = 3;
  std::vector<values> c;
  std::vector<binom> ours;
  std::vector<plain::poly> plain;
};

void add_antifunction(long n) {
  constexpr int unknowns = 4;
  const products_and_sums curve = {2.0 * unknowns - 3, unknowns - 1.0};
  const products_and_sums point =
      curve + powers_below(2 * unknowns - 1) + products_and_sums{unknowns - 1, 3 * unknowns - 2};
  row<inverse_inputs> r("antifunction by samples, 4 coefficients", n, {point.side_by_side() * double(n), 0});
  r.agree({1e-5}).note("correctly rounded powers");
  r.ours([](inverse_inputs& in, int i) { return in.ours[std::size_t(i)].antifunction(0, 1, in.step); });
  r.peer("other", "running powers", [](inverse_inputs& in, int i) -> Eigen::VectorXd {
    const auto c = fixed<unknowns>(in.c[std::size_t(i)]);
    double sums[2 * unknowns - 1] = {}, moments[unknowns] = {};
    for (long k = 0; k <= in.n; ++k) {
      const double x = double(k) * in.step, y = horner(c, x);
      double power = 1;
      for (int j = 0; j < 2 * unknowns - 1; ++j) {
        sums[j] += power;
        if (j < unknowns) moments[j] += power * x;
        power *= y;
      }
    }
    Eigen::Matrix<double, unknowns, unknowns> a;
    for (int row = 0; row < unknowns; ++row) {
      for (int col = 0; col < unknowns; ++col) a(row, col) = sums[row + col];
    }
    return a.ldlt().solve(Eigen::Map<Eigen::Matrix<double, unknowns, 1>>(moments));
  });
  if (n <= 1000)
    r.plain([](inverse_inputs& in, int i) { return plain::antifunction(in.plain[std::size_t(i)], 0, 1, in.step); });
}

// ---------------------------------------------------------------------------- moving along x

struct shift_inputs {
  explicit shift_inputs(long size) : n(size) {
    for (int i = 0; i < rotation; ++i) {
      c.push_back(random_values(std::size_t(n), 71 + std::uint64_t(i)));
      ours.emplace_back();
      set(ours.back(), c.back());
    }
  }
  static void restore(shift_inputs& in) {
    in.moved = std::vector<binom>(rotation);
    for (std::size_t i = 0; i < rotation; ++i) in.moved[i].copy(in.ours[i]);
  }
  long n;
  static constexpr int rotation = 31;
  std::vector<values> c;
  std::vector<binom> ours, moved;
};

constexpr double distance = 0.25;

void add_shift(long n) {
  const double m = double(n);
  row<shift_inputs> r("shift_h by number of coefficients", n, {m * (m - 1), 16 * m});
  r.agree({1e-12}).note("powers of the factor, then sums in a stated order");
  r.ours(
      [](shift_inputs & in, int i) -> auto& {
        in.moved[std::size_t(i)].shift_h(distance);
        return in.moved[std::size_t(i)];
      },
      shift_inputs::restore);
  r.peer("other", "repeated Horner", [](shift_inputs& in, int i) {
    values c = in.c[std::size_t(i)];
    for (std::size_t first = 0; first + 1 < c.size(); ++first) {
      for (std::size_t k = c.size() - 1; k-- > first;) c[k] -= distance * c[k + 1];
    }
    return c;
  });
  r.plain([](shift_inputs& in, int i) {
    plain::poly p{in.c[std::size_t(i)]};
    plain::shift_h(p, distance);
    return p;
  });
}

}  // namespace

void add_searches() {
  add_highest_bend(1000);
  add_highest_bend(100000);
  add_antifunction(1000);
  add_antifunction(100000);
  for (long n : {4, 16, 64}) add_shift(n);
}

}  // namespace bench
