#include "codecs/Formats.h"
#include "codecs/bmp/cBMPparser.h"
#include "codecs/gif/cGIFparser.h"
#include "codecs/ico/cICOparser.h"
#include "codecs/jpg/cJPGWriter.h"
#include "codecs/png/cPNGwriter.h"
#include "codecs/tga/cTGAparser.h"

namespace pixkit {

WrittenFile write(std::span<const SourcePicture> pictures, const WriteOptions& options) {
    struct Writers {
        std::span<const SourcePicture> pictures;
        WrittenFile operator()(const BmpOptions& bmp) const { return cBMPparser::SaveAsBMP(pictures.front(), bmp); }
        WrittenFile operator()(const TgaOptions& tga) const { return cTGAparser::SaveAsTGA(pictures.front(), tga); }
        WrittenFile operator()(const JpgOptions& jpg) const { return cJPGWriter::SaveAsJPG(pictures.front(), jpg); }
        WrittenFile operator()(const GifOptions& gif) const { return cGIFparser::SaveAsGIF(pictures.front(), gif); }
        WrittenFile operator()(const IcoOptions& ico) const { return cICOparser::SaveAsIcon(pictures, ico); }
        WrittenFile operator()(const PngProperties* png) const { return cPNGwriter::SavePNGex(pictures.front(), *png); }
    };
    return std::visit(Writers{pictures}, options);
}

} // namespace pixkit
