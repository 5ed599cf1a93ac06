#include "kernels/scalar.h"
#include "kernels/variants.h"

namespace pixkit::kernels {

namespace {

constexpr Table scalarTable = {
    .scanAlpha = scalar::scanAlpha,
    .copyScanningAlpha = scalar::copyScanningAlpha,
    .setOpaque = scalar::setOpaque,
    .premultiply = scalar::premultiply,
    .copyPremultiplying = scalar::copyPremultiplying,
    .unpremultiply = scalar::unpremultiply,
    .invert = scalar::invert,
    .grayscale = scalar::grayscale,
    .adjustLightness = scalar::adjustLightness,
    .blendToColour = scalar::blendToColour,
    .replacePixel = scalar::replacePixel,
    .flatten24 = scalar::flatten24,
    .flatten32 = scalar::flatten32,
    .mirror = scalar::mirror,
    .gatherPixels = scalar::gatherPixels,
    .sampleBilinear = scalar::sampleBilinear,
    .sampleWidened = scalar::sampleWidened,
    .widenPixels = scalar::widenPixels,
    .walkNearest = scalar::walkNearest,
    .walkBilinear = scalar::walkBilinear,
    .blendOver = scalar::blendOver,
    .blendScaled = scalar::blendScaled,
    .blendToned = scalar::blendToned,
    .slideAlphaSums = scalar::slideAlphaSums,
    .shadeBoxes = scalar::shadeBoxes,
    .swapRedBlue = scalar::swapRedBlue,
    .pack24 = scalar::pack24,
    .unpack24 = scalar::unpack24,
    .extractAlpha = scalar::extractAlpha,
    .unfilterSub = scalar::unfilterSub,
    .unfilterUp = scalar::unfilterUp,
    .unfilterAvg = scalar::unfilterAvg,
    .unfilterAvgOfFirstRow = scalar::unfilterAvgOfFirstRow,
    .unfilterPaeth = scalar::unfilterPaeth,
    .filterSub = scalar::filterSub,
    .filterUp = scalar::filterUp,
    .filterAvg = scalar::filterAvg,
    .filterPaeth = scalar::filterPaeth,
    .filterSums = scalar::filterSums,
    .adler32 = scalar::adler32,
    .fromRgb8 = scalar::fromRgb8,
    .fromRgba8 = scalar::fromRgba8,
    .fromGrayAlpha8 = scalar::fromGrayAlpha8,
    .fromIndex8 = scalar::fromIndex8,
    .fromGray16 = scalar::fromGray16,
    .fromRgb16 = scalar::fromRgb16,
    .fromRgba16 = scalar::fromRgba16,
    .fromGrayAlpha16 = scalar::fromGrayAlpha16,
    .unpackSamples = scalar::unpackSamples,
    .scatter = scalar::scatter,
    .toYCbCr = scalar::toYCbCr,
    .halveSamples = scalar::halveSamples,
    .transformBlocks = scalar::transformBlocks,
};

// Each level starts from the one below it: an entry without a variant of its own keeps the lower one.
const Table& sse2Table() noexcept {
    static const Table filled = [] {
        Table table = scalarTable;
#ifdef PIXKIT_X86
        useAlphaSse2(table);
        useEffectsSse2(table);
        useBlendSse2(table);
        useLayoutsSse2(table);
        useFiltersSse2(table);
        useSamplesSse2(table);
        useShadowSse2(table);
        useJpegSse2(table);
        useResampleSse2(table);
        useFilteringSse2(table);
#endif
        return table;
    }();
    return filled;
}

const Table& avx2Table() noexcept {
    static const Table filled = [] {
        Table table = sse2Table();
#ifdef PIXKIT_X86
        useAlphaAvx2(table);
        useEffectsAvx2(table);
        useBlendAvx2(table);
        useLayoutsAvx2(table);
        useFiltersAvx2(table);
        useSamplesAvx2(table);
        useShadowAvx2(table);
        useJpegAvx2(table);
        useResampleAvx2(table);
        useFilteringAvx2(table);
#endif
        return table;
    }();
    return filled;
}

} // namespace

const Table* tableFor(CpuLevel level) noexcept {
    if (level > detectedLevel()) return nullptr;
    switch (level) {
    case CpuLevel::scalar:
        return &scalarTable;
    case CpuLevel::sse2:
        return &sse2Table();
    case CpuLevel::avx2:
        return &avx2Table();
    }
    return nullptr;
}

const Table& table() noexcept {
    static const Table& chosen = *tableFor(level());
    return chosen;
}

} // namespace pixkit::kernels
