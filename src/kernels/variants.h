// How the files of one instruction set enter their kernels into a table.
#pragma once
#include "kernels/kernels.h"

namespace pixkit::kernels {

void useAlphaSse2(Table& table) noexcept;
void useEffectsSse2(Table& table) noexcept;
void useBlendSse2(Table& table) noexcept;
void useLayoutsSse2(Table& table) noexcept;
void useFiltersSse2(Table& table) noexcept;
void useSamplesSse2(Table& table) noexcept;
void useShadowSse2(Table& table) noexcept;
void useJpegSse2(Table& table) noexcept;
void useResampleSse2(Table& table) noexcept;
void useFilteringSse2(Table& table) noexcept;

void useAlphaAvx2(Table& table) noexcept;
void useEffectsAvx2(Table& table) noexcept;
void useBlendAvx2(Table& table) noexcept;
void useLayoutsAvx2(Table& table) noexcept;
void useFiltersAvx2(Table& table) noexcept;
void useSamplesAvx2(Table& table) noexcept;
void useShadowAvx2(Table& table) noexcept;
void useJpegAvx2(Table& table) noexcept;
void useResampleAvx2(Table& table) noexcept;
void useFilteringAvx2(Table& table) noexcept;

// The best level the processor and the operating system can run, whatever the environment says.
CpuLevel detectedLevel() noexcept;

} // namespace pixkit::kernels
