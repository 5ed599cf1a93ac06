// Reference kernels for resampling.
#include "kernels/scalar.h"

#include <cstring>

namespace pixkit::kernels::scalar {

void gatherPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + 4 * i, src + offsets[i], 4);
}

void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        for (int channel = 0; channel < 4; ++channel) {
            const std::uint8_t* p = rows.first + offsets[i] + channel;
            double sum = p[0] * (nearWeights[i] * rows.firstWeight);
            sum += p[4] * (farWeights[i] * rows.firstWeight);
            if (rows.second != nullptr) {
                p = rows.second + offsets[i] + channel;
                sum += p[0] * (nearWeights[i] * rows.secondWeight);
                sum += p[4] * (farWeights[i] * rows.secondWeight);
            }
            dst[4 * i + static_cast<std::size_t>(channel)] = static_cast<std::uint8_t>(sum);
        }
    }
}

} // namespace pixkit::kernels::scalar
