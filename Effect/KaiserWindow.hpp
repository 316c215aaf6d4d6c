#pragma once

namespace effect
{

/// sin(πx) / (πx) under Kaiser's window I₀(β √(1 − (x / half)²)) / I₀(β), which is
/// zero from `half` on. J. F. Kaiser, R. W. Schafer, "On the Use of the I₀-Sinh
/// Window for Spectrum Analysis", IEEE Trans. ASSP 28 (1980).
double windowedSinc(double x, double half, double beta);

} // namespace effect
