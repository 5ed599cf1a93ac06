// cPixSheet: one image, its pixel store, and everything that can be done to it.
#pragma once
#include "platform/api.h"
#include "shared/ByteArray.h"
#include "shared/enumerations.h"
#include "surface/Records.h"
#include <any>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pixkit {

struct DroppedFile;                                         // platform/drops.h
using ResourceId = std::variant<std::int32_t, std::string>; // shared/resources.h
struct SheetState;                                          // surface/SheetState.h
namespace platform {
class StdPicture;
struct StdFont; // platform/text.h
} // namespace platform

// Holds at most one image as a 32-bit device-independent bitmap: four bytes a pixel in the order B, G, R, A, colour
// premultiplied by alpha (colour <= alpha), rows bottom-up (the first row in memory is the bottom row of the picture),
// Width * 4 bytes each without padding. Public coordinates count y from the top of the picture.
//
// No member raises: what goes wrong inside becomes the stated failure value, LastErrorText says why, and the object
// stays usable. One instance is used by one thread at a time. File names are UTF-8. Colours are COLORREF values: red in
// bits 0-7, green 8-15, blue 16-23.
//
// Members are defined in the room of their subject: surface/ (properties, lifecycle, pixels), loading/, saving/,
// render/ (all that draws or makes other sizes).
class PIXKIT_API cPixSheet {
  public:
    cPixSheet() noexcept;
    ~cPixSheet();
    cPixSheet(const cPixSheet&) = delete;
    cPixSheet& operator=(const cPixSheet&) = delete;
    // All goes along: the image with its handle, pixels and device context, what is said of its file, the kept
    // original-format bytes, PNG properties, settings, limits, Tag. What was moved from is as a new instance.
    cPixSheet(cPixSheet&& other) noexcept;
    cPixSheet& operator=(cPixSheet&& other) noexcept;

    // --- what the instance holds (surface/Properties.cpp)

    // How much transparency the image has. Loaders set it; callers who edit bits through BitsPointer set it themselves.
    AlphaTypeEnum Alpha() const noexcept;
    void Alpha(AlphaTypeEnum value) noexcept;
    // First byte of the pixels, null without an image.
    std::uint8_t* BitsPointer() const noexcept;
    // The DIB section, 0 without an image.
    std::intptr_t Handle() const noexcept;
    std::int32_t Width() const noexcept;  // Columns of pixels, 0 without an image.
    std::int32_t Height() const noexcept; // Rows of pixels, 0 without an image.
    // Bytes in a row: Width * 4.
    std::int32_t scanWidth() const noexcept;
    // Format the current image came from; imgError without an image, imgNone when it was made or erased here.
    eImageFormat ImageType() const noexcept;

    // Whether stretching interpolates. True at first only where GDI+ is usable.
    bool HighQualityInterpolation() const noexcept;
    void HighQualityInterpolation(bool value) noexcept;
    // Whether the instance keeps its memory device context between uses. Turning it off frees the context, turning it
    // on creates one when there is an image.
    bool ManageOwnDC() const noexcept;
    void ManageOwnDC(bool value) noexcept;
    // Whether the system's AlphaBlend is used. True is ignored on systems that have none.
    bool isAlphaBlendFriendly() const noexcept;
    void isAlphaBlendFriendly(bool value) noexcept;
    // Whether GDI+ draws, loads and saves where it can: what AlphaBlend does not draw, PNG files first of all and last
    // of all whatever no reader here knows, JPEG files. Where it fails or does not do something right, the component
    // does it as without GDI+. True at first, and only, where GDI+ can be started: on Windows nearly everywhere,
    // elsewhere where the program provides it (platform/gdiplus.h).
    bool isGDIplusEnabled() const noexcept;
    void isGDIplusEnabled(bool value) noexcept;
    // Whether zlib can be borrowed on this machine now; tested at every read.
    bool isZlibEnabled() const noexcept;
    // A GDI+ start-up token of the caller's. With one, and GDI+ enabled, GDI+ draws also what AlphaBlend could.
    std::int32_t gdiToken() const noexcept;
    void gdiToken(std::int32_t value) noexcept;
    // Whether GDI+ draws also what AlphaBlend could, through a bridge that the instance keeps, and with it GDI+
    // started, until the image goes. True only sticks while isGDIplusEnabled is true. Otherwise, too, GDI+ is not
    // started anew for each call: it ends with the last instance for which it is enabled.
    bool KeepGDIplusActive() const noexcept;
    void KeepGDIplusActive(bool value) noexcept;
    // Any value of the caller's.
    const std::any& Tag() const noexcept;
    void Tag(std::any value) noexcept;
    // Major, minor and revision of the component, such as "3.0.41"; empty when there is no memory for it.
    std::string Version() const noexcept;
    // Why the last load, save or other call of this instance failed: one sentence without a full stop, such as "the
    // file does not exist"; empty after success. Properties, read or set, leave it as it is. Valid until the next call.
    std::string_view LastErrorText() const noexcept;
    // Whether nobody is there to answer questions or to read messages: questions are then answered No, and nothing is
    // shown. False at first. Processes without a visible window station are unattended whatever this says, unless a
    // handler answers in a person's place (platform/interaction.h).
    bool Unattended() const noexcept;
    void Unattended(bool value) noexcept;
    // The most pixels, Width * Height, that an image made or loaded from now on may have. 0, as at first, is no limit
    // but what an image holds at all (InitializeDIB). It is the instance's own: it holds for InitializeDIB, all loads,
    // copies of another size into this instance, Resize, Resample, CreateDropShadow, and sizes that are asked for of
    // icons and cursors; new instances that CopyImageTo and CreateDropShadow make take it over. More is refused by the
    // header, before it costs memory or time (TGA and icon files are read first); images of an icon file beyond it are
    // passed over, a JPEG whose size nothing tells is refused. What is held stays, and can be swapped, drawn and saved.
    // A double, as callers through COM have them and 32 bits would not reach. Values below 0 and NaN are ignored.
    double MaxPixels() const noexcept;
    void MaxPixels(double value) noexcept;
    // The most bytes that a call may take for an image and for the work on it; 0, as at first, is no limit. It holds
    // where MaxPixels does, and is the instance's own likewise. Counted as if all of it were held at once:
    // - 4 bytes for each pixel of the image, of icons to be made of them all; of what is no load, that is all.
    // - The bytes of a file that is loaded, also of a dropped or pasted one that is contents only, and with SaveFormat
    //   those of an array, but not the PNG that is kept of what GDI+ reads. Bytes that callers, resources, the
    //   clipboard hand over are theirs.
    // - PNG: the filtered rows, but at most 192 KiB, or two rows and 96 KiB where that is more. BMP: two rows. Icons: a
    //   byte for each pixel.
    // - What comes through the system's loader (GIF, JPEG) or GDI+: 4 bytes for each pixel of its picture; of a GIF its
    //   data twice; of a JPEG in several scans 2 bytes for each coefficient. Metafiles, which are drawn twice,
    //   likewise.
    // - Icons and cursors by their handle: 4 bytes for each pixel of their bitmaps, and one for the mask.
    // Tables, single rows and what the system takes on its own account do not count: a mebibyte or two.
    double MaxMemory() const noexcept;
    void MaxMemory(double value) noexcept;

    // What of the file the image has not, a sentence a line, each without a full stop; empty where nothing is missing:
    // "the file ends early", "2 further frames are left out" of an animation, and of 16 bits a channel, a gamma or
    // primaries other than those of sRGB, a colour profile, EXIF data, and texts of a PNG that are damaged or too long.
    // A load sets it, and it goes with the image: DestroyDIB, EraseDIB and the next load end it, copies have it.
    std::string LoadNotes() const noexcept;
    // How the EXIF data of a JPEG or PNG file wants the image, which is as stored, to be shown: 1 (also where nothing
    // says it) as it is, 2 mirrored left to right, 3 turned by 180 degrees, 4 mirrored top to bottom, 5 mirrored left
    // to right, then turned by 270 degrees clockwise, 6 turned by 90, 7 mirrored, then turned by 90, 8 turned by 270.
    // It comes and goes as LoadNotes does.
    std::int32_t Orientation() const noexcept;

    // --- lifecycle (surface/cPixSheet.cpp)

    // Replaces what the instance holds by a fully transparent image (all bytes 0, AlphaSimple, imgNone). A negative
    // height counts as its absolute value. False, and empty, for a negative width, a width or height of 0, more bytes
    // than 31 bits count, more than MaxPixels or MaxMemory allow, or no memory. The old image goes in every case.
    bool InitializeDIB(std::int32_t Width, std::int32_t Height) noexcept;
    // Frees image, device context and original-format bytes; ImageType becomes imgError.
    void DestroyDIB() noexcept;
    // Sets every byte to 0 (imgNone, AlphaSimple); the size stays.
    void EraseDIB() noexcept;
    // True: selects the image into a memory device context of the instance and returns that; repeated calls are
    // harmless. False: deselects it, frees the context unless ManageOwnDC, returns 0. 0 also without an image.
    std::intptr_t LoadDIBinDC(bool bLoad) noexcept;
    // Exchanges the images of two instances without copying pixels; each keeps its own settings. No effect with null.
    void SwapDIBs(cPixSheet* SwapFromDIB) noexcept;

    // --- copies (render/Copy.cpp)

    // Copies the image, its Alpha, ImageType and gdiToken into another instance, which is resized when it needs to be.
    // 0 for a size means this image's. With CopyOriginalFormat the original-format bytes go along. Does nothing without
    // an image or when the target is this instance. Where it is null it receives a new one, which also takes over
    // isGDIplusEnabled, HighQualityInterpolation, Unattended, MaxPixels and MaxMemory. A copy at another size is drawn
    // as Render does without AlphaBlend; should there be no memory for that, the target is left an empty (fully
    // transparent) image of the new size.
    void CopyImageTo(cPixSheet& cDIBclass, std::int32_t newWidth = 0, std::int32_t newHeight = 0,
                     bool CopyOriginalFormat = false) noexcept;
    void CopyImageTo(std::unique_ptr<cPixSheet>& cDIBclass, std::int32_t newWidth = 0, std::int32_t newHeight = 0,
                     bool CopyOriginalFormat = false) noexcept;

    // --- pixels (surface/PixelAccess.cpp)

    // The pixel's COLORREF, straight unless asPreMultiplied (channel * 255 \ alpha for alpha other than 0 and 255), and
    // its alpha in *AlphaValue. -1, and alpha 0, outside the image.
    std::int32_t GetPixel(std::int32_t x, std::int32_t y, std::int32_t* AlphaValue = nullptr,
                          bool asPreMultiplied = false) const noexcept;
    // Writes one pixel and returns its address, or null (nothing written) outside the image or for an AlphaValue
    // outside 0 .. 255. A straight colour is premultiplied; of a premultiplied one, channels above alpha are scaled by
    // alpha. Any AlphaValue but 255 makes the image AlphaComplex.
    std::uint8_t* SetPixel(std::int32_t x, std::int32_t y, std::int32_t Color, std::int32_t AlphaValue = 255,
                           bool isPreMultiplied = false) noexcept;
    // The alpha plane of a rectangle, cut at the right and bottom edge of the image: rows of Width bytes, padded to
    // four with 0 when asWordAligned, as two dimensions (byte, row) or flat. A size of 0 means the whole image's.
    // False, and outStream untouched, without an image, for negative x or y, or when nothing of the rectangle is left.
    bool GetAlphaMask(ByteArray& outStream, bool as2dArray = true, bool asWordAligned = true, bool asBottomUp = true,
                      std::int32_t x = 0, std::int32_t y = 0, std::int32_t Width = 0,
                      std::int32_t Height = 0) const noexcept;
    // The pixels of a rectangle chosen as in GetAlphaMask: B, G, R (or R, G, B) and, with as32bpp, A. Rows of 3-byte
    // pixels are padded to four bytes when asWordAligned. Straight colours, when asked for, follow GetPixel's rule.
    bool GetDIBbits(ByteArray& outStream, bool as2dArray = true, bool asBGRformat = true, bool as32bpp = true,
                    bool asWordAligned = true, bool asBottomUp = true, std::int32_t x = 0, std::int32_t y = 0,
                    std::int32_t Width = 0, std::int32_t Height = 0, bool asPreMultiplied = true) const noexcept;
    // By value what those three give by reference, with their arguments: a pixel's alpha, -1 outside the image; arrays,
    // not allocated on failure.
    std::int32_t PixelAlpha(std::int32_t x, std::int32_t y) const noexcept;
    ByteArray AlphaMask(bool as2dArray = true, bool asWordAligned = true, bool asBottomUp = true, std::int32_t x = 0,
                        std::int32_t y = 0, std::int32_t Width = 0, std::int32_t Height = 0) const noexcept;
    ByteArray DIBbits(bool as2dArray = true, bool asBGRformat = true, bool as32bpp = true, bool asWordAligned = true,
                      bool asBottomUp = true, std::int32_t x = 0, std::int32_t y = 0, std::int32_t Width = 0,
                      std::int32_t Height = 0, bool asPreMultiplied = true) const noexcept;
    // Writes a rectangle in the layouts of GetDIBbits (3-byte pixels become opaque); then the whole image is classified
    // and brought into canonical form, and Alpha set. A two-dimensional array's rows are as long as its first
    // dimension, whatever isWordAligned says. False, and nothing changed, without an image or data, for negative
    // positions, a rectangle outside the image, or data too short for it.
    bool SetDIBbits(const ByteArray& inStream, bool isBGRformat = true, bool is32bpp = true, bool isWordAligned = true,
                    bool isBottomUp = true, std::int32_t dstX = 0, std::int32_t dstY = 0, std::int32_t dstWidth = 0,
                    std::int32_t dstHeight = 0) noexcept;

    // --- rows from top to bottom (surface/Rows.cpp), for C++ programs

    // The whole image as rows from top to bottom, Width * 4 bytes each without gaps, pixels as RowFormat says. Straight
    // colours are the quotients colour * 255 / alpha rounded up: SetRows, which truncates, and every reader of files
    // turn these, as those in PNG files, back into the stored ones, while GetPixel's may lose 1. Clear pixels are 0, 0,
    // 0, 0. Where Alpha is AlphaNone every alpha is 255. Empty without an image, and without memory.
    std::vector<std::uint8_t> GetRows(RowFormat Format = RowFormat::straightRGBA) const noexcept;
    // The same into a caller's bytes: the top left pixel comes first, rows begin Stride bytes apart (0: Width * 4), and
    // bytes between them stay as they are. False, and nothing written, without an image, for a Stride below Width * 4,
    // and where there are too few bytes; the last row needs no gap behind it.
    bool GetRows(std::span<std::uint8_t> rows, RowFormat Format = RowFormat::straightRGBA,
                 std::size_t Stride = 0) const noexcept;
    // Makes an image of such rows. As a load it first empties the instance; ImageType becomes imgNone, Alpha what the
    // alpha bytes come to, clear throughout being AlphaSimple. Straight colours become colour * alpha / 255, truncated;
    // premultiplied ones above their alpha are held at it. `rows` may lie in the pixels of the instance itself. False,
    // and the instance empty, for a width or height below 1, a Stride below Width * 4, too few bytes, and where
    // InitializeDIB is.
    bool SetRows(std::span<const std::uint8_t> rows, std::int32_t Width, std::int32_t Height,
                 RowFormat Format = RowFormat::straightRGBA, std::size_t Stride = 0) noexcept;

    // --- loading (loading/LoadDispatch.cpp); every load, refused ones included, first empties the instance, but for
    // LoadPicture_FromOrignalFormat where there is nothing to load

    // Loads a file of more than 56 bytes. iconCx, iconCy (0 = any) and iconBitDepth (0 .. 32) choose the image of an
    // icon file. SaveFormat keeps the file's bytes for GetOrginalFormat.
    bool LoadPicture_File(const std::string& FileName, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                          bool SaveFormat = false, std::int32_t iconBitDepth = 32) noexcept;
    // Loads from a one-dimensional array, at least 20 bytes of it: `streamLength` bytes (0 = to the end) from index
    // `streamStart` (below the lower bound = from there). SaveFormat keeps the whole array.
    bool LoadPicture_Stream(const ByteArray& inStream, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                            std::int32_t streamStart = 0, std::int32_t streamLength = 0, bool SaveFormat = false,
                            std::int32_t iconBitDepth = 32) noexcept;
    // The same from bytes of the program's, which stay as they are: sheet.LoadPicture_Stream(bytes).
    bool LoadPicture_Stream(std::span<const std::uint8_t> inStream, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                            std::int32_t streamStart = 0, std::int32_t streamLength = 0, bool SaveFormat = false,
                            std::int32_t iconBitDepth = 32) noexcept;
    // And where bytes are kept as std::byte or char: vectors, arrays, std::string, std::string_view. A text between
    // quotes is meant as a file's name, and refused by the compiler; of an array of char, std::span says that bytes are
    // meant.
    bool LoadPicture_Stream(std::span<const std::byte> inStream, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                            std::int32_t streamStart = 0, std::int32_t streamLength = 0, bool SaveFormat = false,
                            std::int32_t iconBitDepth = 32) noexcept {
        return LoadPicture_Stream(std::span(reinterpret_cast<const std::uint8_t*>(inStream.data()), inStream.size()),
                                  iconCx, iconCy, streamStart, streamLength, SaveFormat, iconBitDepth);
    }
    bool LoadPicture_Stream(std::span<const char> inStream, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                            std::int32_t streamStart = 0, std::int32_t streamLength = 0, bool SaveFormat = false,
                            std::int32_t iconBitDepth = 32) noexcept {
        return LoadPicture_Stream(std::as_bytes(inStream), iconCx, iconCy, streamStart, streamLength, SaveFormat,
                                  iconBitDepth);
    }
    template <std::size_t Count>
    bool LoadPicture_Stream(const char (&text)[Count], auto...) = delete;
    // Loads a system picture (platform/pictures.h): the pixels of a bitmap or icon, or what a metafile draws at its
    // natural size; null only empties the instance.
    bool LoadPicture_StdPicture(const platform::StdPicture* Picture) noexcept;
    // Loads a bitmap, icon or cursor by its handle, which stays the caller's. False for any other.
    bool LoadPicture_ByHandle(std::intptr_t Handle) noexcept;
    // Loads the picture on the clipboard (loading/ClipboardPictures.cpp), tried again for half a second while another
    // program keeps it open: what CopyToClipBoard of an instance put there exactly as it was, else a PNG, else the
    // first in the order of whoever offers them of CF_DIBV5, CF_DIB, CF_BITMAP, CF_ENHMETAFILE, TIFF, GIF, JPEG, BMP;
    // after one that cannot be read the next. ImageType is that of such a file, of bitmaps as for BMP files.
    // SaveFormat keeps the file, of a bitmap the BMP file that it would be. Natively the clipboard is what the program
    // provides (platform/clipboard.h).
    bool LoadPicture_ClipBoard(bool SaveFormat = false) noexcept;
    // Loads a resource of the program's, which its resource provider (shared/resources.h) gives: for a ResSection that
    // is a name, bytes, taken as by LoadPicture_Stream; for a number (0 bitmap, 1 icon, 2 cursor) a picture.
    bool LoadPicture_Resource(const ResourceId& ResIndex, const ResourceId& ResSection, std::int32_t iconCx = 32,
                              std::int32_t iconCy = 32, std::int32_t streamStart = 0, std::int32_t streamLength = 0,
                              std::int32_t iconBitDepth = 32) noexcept;
    // Loads the kept original-format bytes again, which are kept again. False when there are none: then the instance
    // stays as it is.
    bool LoadPicture_FromOrignalFormat(std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                                       std::int32_t iconBitDepth = 32) noexcept;
    // A copy of the kept original-format bytes; false, and outStream unallocated, when there are none.
    bool GetOrginalFormat(ByteArray& outStream) const noexcept;
    // The images of the icon or cursor file that the image came from, if a load with SaveFormat kept the file, in its
    // order; those that cannot be read are left out. Returns how many. 0, and sizeArray as it was, otherwise.
    std::int32_t SourceIconSizes(std::vector<IconSourceSize>& sizeArray) const noexcept;

    // --- dropped and pasted files (loading/DroppedFiles.cpp)

    // Loads a file of those that were dropped: the one of this index, from 1, or for 0 the first that loads. A file by
    // its name is loaded as by LoadPicture_File, contents as by LoadPicture_Stream. On Windows platform::filesOfDrop
    // (platform/drops.h) makes the files of an HDROP; toolkits give names. False for an index without a file.
    bool LoadPicture_DropedFiles(std::span<const DroppedFile> Data, std::int32_t FileIndex = 0,
                                 std::int32_t iconCx = 32, std::int32_t iconCy = 32, bool SaveFormat = false,
                                 std::int32_t iconBitDepth = 32) noexcept;
    // The same for the files on the clipboard (platform/clipboard.h): those that a CF_HDROP names, else on Windows
    // those that are contents only.
    bool LoadPicture_PastedFiles(std::int32_t FileIndex = 0, std::int32_t iconCx = 32, std::int32_t iconCy = 32,
                                 bool SaveFormat = false, std::int32_t iconBitDepth = 32) noexcept;
    // The names of dropped or pasted files, in UTF-8 and in their order; files that have none are left out. Returns how
    // many. 0, and FileNames as it was, when there are none.
    std::int32_t GetDroppedFileNames(std::span<const DroppedFile> Data,
                                     std::vector<std::string>& FileNames) const noexcept;
    std::int32_t GetPastedFileNames(std::vector<std::string>& FileNames) const noexcept;

    // --- saving (saving/SaveDispatch.cpp)

    // Saves as a BMP file. An opaque image has 24 bits a pixel; one with alpha 32, premultiplied as stored, when
    // KeepPreMultipliedPixels, else it is flattened onto TransparentFillColor at 24. An existing file, read-only or
    // not, is replaced, after a Yes/No question when PromptOverWrite; who owns it and who may read it stays, and a link
    // leads on to it (docs/security.md). False without an image, on a No, for a directory, or when the file cannot be
    // written whole or put in the place of the old one, which then is as it was.
    bool SaveToFile_Bitmap(const std::string& FileName, bool KeepPreMultipliedPixels = false,
                           std::int32_t TransparentFillColor = 0, bool PromptOverWrite = true) const noexcept;
    // The bytes of that file in one dimension from 0. On failure outStream keeps what it held.
    bool SaveToStream_Bitmap(ByteArray& outStream, bool KeepPreMultipliedPixels = false,
                             std::int32_t TransparentFillColor = 0) const noexcept;
    // Saves as a TGA file (version 2.0): 32 bits a pixel when Alpha says that there is some, else 24. Compress
    // run-length codes the pixels, where that makes them shorter. ReduceBitDepth writes an opaque image of at most 256
    // colours with a palette and 8 bits a pixel. Colours of an image with alpha are saved straight, such that a load
    // finds those that were stored, or, with AllowPreMultipliedPixels, as stored, which the file then says. Overwriting
    // and failure as for SaveToFile_Bitmap; false also for more than 65,535 columns or rows.
    bool SaveToFile_TGA(const std::string& FileName, bool Compress = false, bool ReduceBitDepth = false,
                        bool AllowPreMultipliedPixels = false, bool PromptOverWrite = true) const noexcept;
    // The bytes of that file in one dimension from 0. On failure outStream keeps what it held.
    bool SaveToStream_TGA(ByteArray& outStream, bool Compress = false, bool ReduceBitDepth = false,
                          bool AllowPreMultipliedPixels = false) const noexcept;

    // Saves as a PNG file, in the colour type and depth that suit the pixels (codecs/png/README.md), with the texts and
    // other properties of PngPropertySet. Colours are written straight, such that a load finds those that were stored.
    // With Alpha AlphaNone the alpha bytes mean nothing. Overwriting and failure as for SaveToFile_Bitmap.
    bool SaveToFile_PNG(const std::string& FileName, bool PromptOverWrite = true) const noexcept;
    // The bytes of that file in one dimension from 0. On failure outStream keeps what it held.
    bool SaveToStream_PNG(ByteArray& outStream) const noexcept;
    // What PNG files that this instance saves say, and how they are written. What is set belongs to the instance:
    // loads and DestroyDIB leave it, CopyImageTo and SwapDIBs do not take it along. What is not set, texts and density
    // have of the PNG file that the image was loaded from, and that goes with the image. Texts are UTF-8; pngText needs
    // a Keyword of 1 to 79 printable Latin-1 characters without spaces at the ends or two together, the others bring
    // their own. Colours, densities (pixels in a metre), level (0 .. 9), filter (eFilterMethods) and interlacing (not
    // 0) are whole numbers; pngLastModified is a double, days since 30 December 1899, or a text "2024-02-29 12:34:56"
    // of UTC. An empty value or text takes a property back, the file's too. False, and nothing changed, for a keyword
    // or value that PNG does not allow, and for a property that does not exist.
    bool PngPropertySet(ePngProperties Property, const PngValue& Value, const std::string& Keyword = {}) noexcept;
    // The value as it was set or loaded, pngLastModified as a double. Empty (std::monostate) for what was not, except
    // that level, filter and interlacing then give what is in force (6, filterDefault, 0).
    PngValue PngPropertyGet(ePngProperties Property, const std::string& Keyword = {}) const noexcept;

    // Saves as a baseline JPEG file, Quality 1 (smallest) to 100 (best), values outside counting as the nearer end.
    // Transparency is flattened onto TransparentFillColor; an image of which nothing is there, and whose Alpha does not
    // deny it, becomes that colour. Below 90 chroma has half the picture's width and height; a picture in grays is
    // saved as such. Overwriting and failure as for SaveToFile_Bitmap; false also for more than 65,500 columns or rows,
    // which readers refuse.
    bool SaveToFile_JPG(const std::string& FileName, std::int32_t Quality = 70, std::int32_t TransparentFillColor = 0,
                        bool PromptOverWrite = true) const noexcept;
    // The bytes of that file, flattened onto black, in one dimension from 0. On failure outStream keeps what it held.
    bool SaveToStream_JPG(ByteArray& outStream, std::int32_t Quality = 70) const noexcept;
    // Saves as a GIF file. Where Alpha says that there is alpha, pixels whose alpha is below OpaquenessTolerance become
    // transparent and all others opaque, in their straight colours (GetPixel's rule). UseAdaptivePalette: the image's
    // own colours when they are at most 256, transparency counting as one, else a palette that fits it; without, the
    // 216 web-safe colours, with errors diffused. Overwriting and failure as for SaveToFile_Bitmap; false also for more
    // than 65,535 columns or rows.
    bool SaveToFile_GIF(const std::string& FileName, bool UseAdaptivePalette = true,
                        std::uint8_t OpaquenessTolerance = 128, bool PromptOverWrite = true) const noexcept;
    // The bytes of that file in one dimension from 0; nobody is asked anything. On failure outStream keeps what it
    // held.
    bool SaveToStream_GIF(ByteArray& outStream, bool UseAdaptivePalette = true, std::uint8_t OpaquenessTolerance = 128,
                          bool PromptOverWrite = true) const noexcept;

    // Saves an icon file with one image of each of the Sizes, or, without any, of each source's own size at 32 bits. An
    // image is made of the Source of exactly its size, else of the next larger, else of the largest; no Source is this
    // instance, which saves nothing without an image, whatever the sources hold. The picture fills the size in its
    // proportions, centred, what remains being clear: averaged where it shrinks, interpolated where it grows. Below 32
    // bits, alpha below 128 is clear and all else opaque. From 256 pixels a side on, images are PNG files of 32 bits
    // inside of the icon file, and so are those of 32 bits that could otherwise not be read as they are. A cursor file,
    // with hotspots in scale, for the extension .cur, and for any but .ico when the first source was a cursor. Returns
    // the number of images. 0 when a source is null or empty, a side is outside 1 .. 65,535, a depth does not exist, or
    // there are more than 65,535 sizes, all of which is looked at after the question; overwriting and failure as for
    // SaveToFile_Bitmap.
    std::int32_t SaveToFile_ICO(const std::string& FileName, std::span<const cPixSheet* const> Source,
                                bool PromptOverWrite, std::span<const IconEntrySize> Sizes = {}) const noexcept;
    // The bytes of that file, in one dimension from 0. On failure outStream keeps what it held.
    std::int32_t SaveToStream_ICO(ByteArray& outStream, std::span<const cPixSheet* const> Source = {},
                                  std::span<const IconEntrySize> Sizes = {}) const noexcept;
    // The bytes of the file that SaveToStream_... makes in a format of eStreamFormats, in one dimension from 0. Options
    // are that member's behind outStream, in its order, true being any number but 0; those left out at the end have its
    // defaults. Those of an icon, whose only source this image is, are width, height and bit depth of each entry. Not
    // allocated where that member fails, for another Format, for more options than there are, and for a size of an
    // icon that is not whole.
    ByteArray StreamOf(std::int32_t Format, const std::vector<std::int32_t>& Options = {}) const noexcept;

    // Replaces what is on the clipboard by this image (saving/CopyToClipBoard.cpp): as PNG, as SaveToFile_PNG writes
    // it, as CF_DIBV5 with straight alpha, as CF_DIB flattened onto white, and in a format of this component's own, by
    // which another instance gets every byte, Alpha and ImageType as they are. All of it outlives the instance and the
    // program. False, and the clipboard as it was, without an image, while another program keeps it open (it is tried
    // for half a second), and where there is no clipboard or no memory.
    bool CopyToClipBoard() const noexcept;

    // --- handing out (saving/SystemObjects.cpp): objects of the system's made of the image, which the caller owns. 0
    // or null without an image, where the system makes none, and without memory

    // A bitmap (a DIB section, rows bottom-up) with a copy of the pixels, to be freed with DeleteObject:
    // - pictPremultiplied, 32 bits as stored: for AlphaBlend, bitmaps of menu items, ribbons.
    // - pictStraight, 32 bits with straight colours by GetPixel's rule: for toolbars, colours of icons, and image lists
    //   that want them straight. Systems differ in that; of icons (CreateIcon) all image lists take the same.
    // - pictFlat, 24 bits, flattened onto BackColor: for all that knows no alpha.
    // An image whose Alpha is AlphaNone is opaque in each. 0 also for other styles.
    std::intptr_t CreateBitmap(std::int32_t Style = pictPremultiplied,
                               std::int32_t BackColor = 0xFFFFFF) const noexcept;
    // An icon of 32 bits with alpha, and a mask for systems that know none, to be freed with DestroyIcon. 0 for a size
    // means the image's. At another size the picture fills it as in the icons of SaveToFile_ICO. 0 also for a side
    // outside 0 .. 65,535.
    std::intptr_t CreateIcon(std::int32_t Width = 0, std::int32_t Height = 0) const noexcept;
    // The same as a cursor, to be freed with DestroyIcon or DestroyCursor. Its hotspot is in pixels of the cursor;
    // below 0 it is that of the image in scale, which is its top left corner where it was no cursor. 0 also for a
    // hotspot outside of the cursor.
    std::intptr_t CreateCursor(std::int32_t HotspotX = -1, std::int32_t HotspotY = -1, std::int32_t Width = 0,
                               std::int32_t Height = 0) const noexcept;
    // A system picture (through COM an IPictureDisp), which owns its handle: of a bitmap as CreateBitmap makes it, or
    // with pictIcon of an icon. pictAuto is what draws right in a picture box: an icon, which is blended with what lies
    // beneath, where Alpha says that there is some, else a flat bitmap, as such boxes copy bitmaps without looking at
    // alpha. Ribbons want pictPremultiplied.
    std::unique_ptr<platform::StdPicture> CreateStdPicture(std::int32_t Style = pictAuto,
                                                           std::int32_t BackColor = 0xFFFFFF) const noexcept;
    // Stands for a coordinate that stays as it is (the system's CW_USEDEFAULT).
    static constexpr std::int32_t keepPosition = std::numeric_limits<std::int32_t>::min();
    // Makes the image the content and its size the size of a window of the program's, blended with what lies behind it
    // at Opacity per cent (values outside 0 .. 100 count as the nearest); x, y are where its top left corner goes. A
    // window without WS_EX_LAYERED gets it. False, and the window as it was, without an image, for another handle,
    // after SetLayeredWindowAttributes, and natively, where there are no windows.
    bool UpdateLayeredWindow(std::intptr_t hWnd, std::int32_t x = keepPosition, std::int32_t y = keepPosition,
                             std::int32_t Opacity = 100) const noexcept;

    // --- effects, in place (render/Effects.cpp); false, and nothing done, without an image

    // Gray = the formula's mix of the premultiplied channels, rounded to nearest, ties to even. False for gsclNone; a
    // value outside the enumeration means gsclNTSCPAL.
    bool MakeGrayScale(std::int32_t Formula) noexcept;
    // Each colour becomes alpha - colour.
    bool MakeImageInverse() noexcept;
    // Lightens (above 0) or darkens by a percentage of each pixel's alpha. False for 0 and outside -100 .. 100.
    bool MakeLighterDarker(float Percent) noexcept;
    // Opaque pixels of exactly this colour become fully transparent; with Revert, empty pixels become this colour,
    // opaque.
    bool MakeTransparent(std::int32_t TransparentColor, bool Revert = false) noexcept;
    // Mixes every visible pixel with a colour at BlendOpacity percent (above 100 counts as 100; false below 1).
    // Partly transparent pixels come out darker than a straight blend.
    bool BlendToColor(std::int32_t BlendColor, std::int32_t BlendOpacity = 33) noexcept;
    // MirrorAxisX flips left to right, MirrorAxisY top to bottom. False when neither is asked for.
    bool MirrorImage(bool MirrorAxisX, bool MirrorAxisY) noexcept;

    // --- drawing (render/Render.cpp)

    // Draws the rectangle SrcX, SrcY (counted from the top), srcWidth, srcHeight of the image onto a device context, or
    // onto the image of destHostDIB where one is given, into the rectangle destX, destY, destWidth, destHeight.
    // - Of the four sizes, 0 means the image's. Negative ones mirror. SrcX or SrcY below 0 count as 0; a source
    //   rectangle that reaches beyond the image is cut there, without the destination. Different sizes stretch:
    //   bilinear with HighQualityInterpolation, else by nearest pixels.
    // - Opacity is a percentage; above 100 it starts again (150 draws at 50, 200 at 100); below 1 draws nothing.
    // - Blend has no effect. SetHalfTone sets that stretch mode while the system draws.
    // - grayScale (gsclNone = none) and LightAdjustment (-100 .. 100 per cent, else ignored) change what is drawn.
    // - CenterOnDestXY takes destX, destY as the centre of the destination.
    // - Angle turns the stretched rectangle clockwise about its centre, in degrees; multiples of 90 move the pixels of
    //   an unstretched picture without mixing them.
    //
    // The system's AlphaBlend draws where isAlphaBlendFriendly, as long as nothing is mirrored, gray, adjusted or
    // stretched with interpolation; it rounds. All else is drawn by the component with divisions that truncate, onto a
    // device context as 24-bit colour. A host's alpha is blended too; its Alpha and ImageType stay what they were, so
    // set Alpha when the drawing brings translucent pixels. Afterwards a host is out of its device context, as by
    // LoadDIBinDC(false), even when it was selected before. What lies outside of the destination is left out; nothing
    // in sight to draw is a success. An image can be drawn over itself.
    //
    // True when it was drawn, or for an Opacity below 1 when there is an image. False without an image or destination,
    // for a source rectangle without pixels, sizes whose sums or opposites 32 bits do not hold, and where the system
    // fails.
    bool Render(std::intptr_t destinationDC, std::int32_t destX = 0, std::int32_t destY = 0, std::int32_t destWidth = 0,
                std::int32_t destHeight = 0, std::int32_t SrcX = 0, std::int32_t SrcY = 0, std::int32_t srcWidth = 0,
                std::int32_t srcHeight = 0, std::int32_t Opacity = 100, bool Blend = true, bool SetHalfTone = true,
                cPixSheet* destHostDIB = nullptr, std::int32_t grayScale = gsclNone, float LightAdjustment = 0,
                float Angle = 0, bool CenterOnDestXY = false) noexcept;
    // Draws the shadow that CreateDropShadow makes with its top left corner at x, y, as Render does; MaxPixels and
    // MaxMemory do not count for it. False without an image or where the shadow cannot be made or drawn.
    bool RenderDropShadow_JIT(std::intptr_t hDC, std::int32_t x, std::int32_t y, std::int32_t blurDepth = 4,
                              std::int32_t Color = 0xC0C0C0, std::int32_t Opacity = 50, float LightAdjustment = 0,
                              cPixSheet* destHostDIB = nullptr) noexcept;
    // Starts GDI+ and returns a token that the caller gives back with DestroyGDIplusToken; 0 where GDI+ is not used.
    std::int32_t CreateGDIplusToken() noexcept;
    // Ends the use of GDI+ that a token stands for; false for 0 and where GDI+ is not used.
    bool DestroyGDIplusToken(std::int32_t Token) noexcept;

    // --- size (render/Resize.cpp)

    // Resamples the image to a new size, bilinearly with HighQualityInterpolation, else taking the nearest pixels. 0
    // keeps a width or height; a negative one mirrors, at its absolute value, exactly where that is the old one. Alpha,
    // ImageType, the original-format bytes and every setting stay. False, and the image untouched, without one or when
    // the new size cannot be made.
    bool Resize(std::int32_t newWidth, std::int32_t newHeight) noexcept;
    // Makes another size by a filter that looks at every pixel (eResampleFilters; shared/FilterAxis.h has the
    // formulas), pixel centres on pixel centres: whole numbers, the same in every build, at most 1 from exact
    // convolution. Colours stay within their alpha; edges become neither darker nor clear. An axis whose size stays is
    // left as it is. 0 and negative sizes as for Resize. The result takes the image's place, or that of destHostDIB
    // where one is given, which keeps its settings, whose limits hold, and gets no original-format bytes. An image
    // whose Alpha is AlphaNone is opaque afterwards, AlphaSimple becomes AlphaComplex where pixels are neither opaque
    // nor clear any more; ImageType stays. Besides both images it takes less than a mebibyte, but for strips of which
    // 30,000 rows or columns become one. False, and both untouched, without an image, for another Filter, or when the
    // new size cannot be made.
    bool Resample(std::int32_t newWidth, std::int32_t newHeight, std::int32_t Filter = resampleAuto,
                  cPixSheet* destHostDIB = nullptr) noexcept;
    // Computes the size at which the image fits destWidth x destHeight in its proportions: ScaleToSize as large as
    // possible, scaleDownAsNeeded never larger than the image. ScaleStretch gives the destination's size, any other
    // mode the image's own. Without an image, or when the result is beyond 32 bits, both stay as they are.
    void ScaleImage(std::int32_t destWidth, std::int32_t destHeight, std::int32_t& newWidth, std::int32_t& newHeight,
                    std::int32_t ScaleMode = scaleDownAsNeeded) const noexcept;

    // --- shadows, backdrops, tiles, trimming (render/DropShadow.cpp, CheckerBoard.cpp, Tile.cpp, Trim.cpp); null or
    // false, and nothing done, without an image

    // A soft shadow of the picture's silhouette in one colour, as a new image that reaches blurDepth (0 .. 10, values
    // outside count as the nearest) pixels beyond each edge: its alpha is the average of the picture's over a square
    // of 2 * blurDepth + 1 pixels, truncated. The time does not depend on the depth. The new instance is drawn by the
    // same means as this one (interpolation, AlphaBlend, GDI+), and as Unattended, with its limits. Null also when
    // there is no memory, or it would exceed MaxPixels or MaxMemory.
    std::unique_ptr<cPixSheet> CreateDropShadow(std::int32_t blurDepth = 4,
                                                std::int32_t Color = 0xC0C0C0) const noexcept;
    // Paints over the image: squares of CheckerSize pixels, FirstColor at the top left, opaque. It becomes
    // imgCheckerBoard and AlphaNone. False for a CheckerSize below 1.
    bool CreateCheckerBoard(std::int32_t CheckerSize = 12, std::int32_t FirstColor = 0xFFFFFF,
                            std::int32_t SecondColor = 0xC0C0C0) noexcept;
    // Repeats the picture over a rectangle of a device context, or of a host when one is given, cut at the rectangle's
    // edges. A tile begins at the rectangle's top left corner moved by offsetX to the right and offsetY down; Gap
    // pixels (0 or more) are left as they are between tiles. Opacity is a percentage; above 100 it wraps: 150 is 50.
    // Tiles are drawn in the way in which Render would draw one, in bands of many: a host's alpha is blended as well,
    // its Alpha and ImageType stay, and it may be this instance; afterwards it is out of its device context. True also
    // when nothing had to be drawn: an Opacity below 1, or a rectangle outside of the destination. False for a
    // rectangle without width or height, a negative Gap, no destination, and one that cannot be read or written; bands
    // that were drawn before the system failed stay.
    bool TileImage(std::intptr_t destinationDC, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                   std::int32_t destHeight, std::int32_t Opacity = 100, std::int32_t offsetX = 0,
                   std::int32_t offsetY = 0, std::int32_t Gap = 0, cPixSheet* destHostDIB = nullptr) const noexcept;
    // Cuts fully transparent columns and rows off the sides that TrimOptions names (eTrimOptions, combined). *Kept
    // receives what is kept of the image as it was, all of it when there is nothing to cut; with ReportOnly that is all
    // that happens. Alpha, ImageType, original-format bytes and settings stay. False, and *Kept untouched, when no side
    // is named, when the image is transparent throughout and would vanish, and when there is no memory.
    bool TrimImage(std::int32_t TrimOptions = trimAll, bool ReportOnly = false, TrimRectangle* Kept = nullptr) noexcept;

    // --- regions (render/Region.cpp)

    // The picture's shape, the pixels whose alpha is at least OpaquenessTolerance (0: all of them, as where Alpha is
    // AlphaNone), as a region: on Windows an HRGN, natively platform/regions.h tells what it holds. Its coordinates
    // count from the image's top left corner, y downwards. The caller owns it, until it is deleted (DeleteObject) or
    // handed over (SetWindowRgn).
    // - regionShaped: exactly these pixels. Rows of the same runs of them share their rectangles.
    // - regionEnclosed: and what they enclose. Outside is what is reached from beyond the edges by steps to the left,
    //   right, up and down through pixels that do not belong; what is reached across corners alone is enclosed, so that
    //   a line of pixels holds what is within it, and a window gets no pinholes.
    // - regionBounds: the smallest rectangle around them.
    // Without such pixels it is an empty region. 0 without an image, for another style, and where memory or the
    // system's regions are used up.
    std::intptr_t CreateRegion(std::int32_t RegionStyle = regionShaped,
                               std::uint8_t OpaquenessTolerance = 1) const noexcept;

    // --- text (render/DrawText.cpp); natively it is there where the library was built with what draws it
    // (platform/text.h: canDrawText)

    // Draws text, in UTF-8, with a font of the caller's onto a device context, or onto the image of destHostDIB where
    // one is given, or onto this image where neither is.
    // - destX, destY, destWidth, destHeight are its rectangle; a size of 0 is the one that MeasureText gives. Nothing
    //   is clipped to it unless txtClip asks for that; but systems cut glyphs off at their font's ascent and descent.
    // - CR LF, LF and CR end lines, tabs lead to stops of eight average characters, other control characters are left
    //   out. WordWrap also breaks lines where they would be wider than destWidth: at the break opportunities of the
    //   system, within a word that is wider than that alone.
    // - Color is the text's, Opacity as in Render. Angle turns the rectangle with its text clockwise about its centre,
    //   in degrees; the turn that a font may have itself counts for nothing.
    // - Alignment (eTextAlignment, combined): where lines stand between the rectangle's left and right edges, and all
    //   of them between its upper and lower. txtRightToLeft is how text is read; it does not swap left and right.
    // What is drawn is a picture of the text, in the means and with the limits of Render with this instance's settings:
    // its alpha is the coverage, its colour premultiplied, rounded up. Where an image that was AlphaSimple has partly
    // transparent pixels then, its Alpha becomes AlphaComplex.
    // True when it was drawn, or nothing of it is to be seen. False for a handle that is no font, a negative size,
    // without a destination, and where the system fails.
    bool DrawText_hFont(std::intptr_t destinationDC, std::intptr_t hFont, const std::string& Text, std::int32_t destX,
                        std::int32_t destY, std::int32_t destWidth = 0, std::int32_t destHeight = 0,
                        std::int32_t Color = 0, std::int32_t Opacity = 100, std::int32_t Alignment = txtLeft,
                        bool WordWrap = false, float Angle = 0, cPixSheet* destHostDIB = nullptr) noexcept;
    // The same with a font by its name and size (platform/text.h).
    bool DrawText_stdFont(std::intptr_t destinationDC, const platform::StdFont& Font, const std::string& Text,
                          std::int32_t destX, std::int32_t destY, std::int32_t destWidth = 0,
                          std::int32_t destHeight = 0, std::int32_t Color = 0, std::int32_t Opacity = 100,
                          std::int32_t Alignment = txtLeft, bool WordWrap = false, float Angle = 0,
                          cPixSheet* destHostDIB = nullptr) noexcept;
    // The size of a text as DrawText draws it at size 0: of the widest line, by what characters move on, and of all
    // lines; a text without characters is one empty line. With WordWrap lines are broken at maxWidth, where that is
    // above 0; with txtEllipsis a longer line counts as it is shortened. Ink may reach beyond, as slanted letters do.
    // False, both untouched: a handle that is no font, maxWidth below 0, a size beyond 32 bits, or the system fails.
    bool MeasureText_hFont(std::intptr_t hFont, const std::string& Text, std::int32_t& Width, std::int32_t& Height,
                           std::int32_t maxWidth = 0, bool WordWrap = false,
                           std::int32_t Alignment = txtLeft) const noexcept;
    bool MeasureText_stdFont(const platform::StdFont& Font, const std::string& Text, std::int32_t& Width,
                             std::int32_t& Height, std::int32_t maxWidth = 0, bool WordWrap = false,
                             std::int32_t Alignment = txtLeft) const noexcept;

  private:
    friend struct HostAccess; // readers, writers and renderers (surface/HostAccess.h)

    SheetState& state() noexcept; // what m_state holds
    const SheetState& state() const noexcept;

    alignas(8) std::byte m_state[96 * sizeof(void*)]; // more than it takes: objects keep their size in later versions
};

// Exchanges all that moving takes along, which is more than SwapDIBs does.
PIXKIT_API void swap(cPixSheet& first, cPixSheet& second) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
