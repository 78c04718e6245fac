// Functions no library on the system offers: inverse error functions, the
// inverse normal distribution and the exponential integral, in any floating type
// (the kernels evaluate them one precision wider than they return).
#pragma once
#include <cmath>
#include <limits>

namespace qnl_vml {

// erf(y) = x: a first guess from a rational fit of the inverse, then Newton
// steps on erf itself, which converge quadratically from there.
template <class W>
W erf_inv(W x) {
  if (std::isnan(x) || x < -1 || x > 1) return std::numeric_limits<W>::quiet_NaN();
  if (x == 1) return std::numeric_limits<W>::infinity();
  if (x == -1) return -std::numeric_limits<W>::infinity();
  if (x == 0) return x;
  W w = -std::log((W(1) - x) * (W(1) + x)), p;
  if (w < W(5)) {
    w -= W(2.5);
    p = W(2.81022636e-08);
    for (W c : {W(3.43273939e-07), W(-3.5233877e-06), W(-4.39150654e-06), W(0.00021858087), W(-0.00125372503),
                W(-0.00417768164), W(0.246640727), W(1.50140941)})
      p = p * w + c;
  } else {
    w = std::sqrt(w) - W(3);
    p = W(-0.000200214257);
    for (W c : {W(0.000100950558), W(0.00134934322), W(-0.00367342844), W(0.00573950773), W(-0.0076224613),
                W(0.00943887047), W(1.00167406), W(2.83297682)})
      p = p * w + c;
  }
  W y = p * x;
  const W k = W(2) / std::sqrt(std::acos(W(-1)));
  for (int i = 0; i < 4; ++i) {
    W e = std::erf(y) - x;
    if (e == 0) break;
    y -= e / (k * std::exp(-y * y));
  }
  return y;
}

// erfc(y) = x, with Newton steps on erfc so that tiny x keep their accuracy.
template <class W>
W erfc_inv(W x) {
  if (std::isnan(x) || x < 0 || x > 2) return std::numeric_limits<W>::quiet_NaN();
  if (x == 0) return std::numeric_limits<W>::infinity();
  if (x == 2) return -std::numeric_limits<W>::infinity();
  if (x > W(0.0625) && x < W(1.9375)) return erf_inv(W(1) - x);
  const bool upper = x > 1;
  const W t = upper ? W(2) - x : x;
  // Asymptotic start: erfc(y) ~ exp(-y^2) / (y sqrt(pi)).
  W y = std::sqrt(-std::log(t * std::sqrt(std::acos(W(-1)))));
  const W k = W(2) / std::sqrt(std::acos(W(-1)));
  for (int i = 0; i < 60; ++i) {
    // Newton on log(erfc(y)) - log(t): well scaled however small t is.
    W e = std::erfc(y);
    W step = (std::log(e) - std::log(t)) * e / (k * std::exp(-y * y));
    y += step;
    if (std::fabs(step) <= std::numeric_limits<W>::epsilon() * y) break;
  }
  return upper ? -y : y;
}

// The standard normal distribution, erfc(-x / sqrt 2) / 2. In the lower tail
// erfc falls by a factor e^(2 t dt) for an error dt in its argument t, so the
// rounding of t and of sqrt 2 (about 2t^2 ulps of W, 0.3 ulp of double at t = 25)
// is taken back by a first-order step along the derivative -2/sqrt(pi) e^(-t^2).
template <class W>
W cdf_norm(W x) {
  const W s = std::sqrt(W(2)), s_lo = std::fma(-s, s, W(2)) / (2 * s);  // sqrt 2 = s + s_lo
  const W t = -x / s, dt = -(std::fma(t, s, x) + t * s_lo) / s;
  const W step = std::isfinite(dt) ? W(2) / std::sqrt(std::acos(W(-1))) * std::exp(-t * t) * dt : W(0);
  return W(0.5) * (std::erfc(t) - step);
}

// Quantile of the standard normal distribution.
template <class W>
W cdf_norm_inv(W p) {
  return -std::sqrt(W(2)) * erfc_inv(W(2) * p);
}

// E1(x) for x > 0: power series below 1, continued fraction above.
template <class W>
W exp_int1(W x) {
  if (std::isnan(x) || x < 0) return std::numeric_limits<W>::quiet_NaN();
  if (x == 0) return std::numeric_limits<W>::infinity();
  if (std::isinf(x)) return 0;
  if (x <= 1) {
    const W euler = W(0.57721566490153286060651209008240243L);
    W sum = 0, term = 1;
    for (int k = 1; k < 60; ++k) {
      term *= -x / k;
      W add = -term / k;
      sum += add;
      if (std::fabs(add) <= std::numeric_limits<W>::epsilon() * std::fabs(sum)) break;
    }
    return -euler - std::log(x) + sum;
  }
  // Modified Lentz evaluation of e^-x / (x + 1 - 1/(x + 3 - 4/(x + 5 - ...))).
  const W tiny = std::numeric_limits<W>::min() * 16;
  W b = x + 1, c = 1 / tiny, d = 1 / b, h = d;
  for (int i = 1; i < 1000; ++i) {
    W an = -W(i) * i;
    b += 2;
    d = 1 / (an * d + b);
    c = b + an / c;
    W del = c * d;
    h *= del;
    if (std::fabs(del - 1) <= std::numeric_limits<W>::epsilon()) break;
  }
  return h * std::exp(-x);
}

}  // namespace qnl_vml
