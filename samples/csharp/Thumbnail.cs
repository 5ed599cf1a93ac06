// Makes a thumbnail of a picture, and its file as bytes, in C# without a reference: members are found by their names.
//
//   Thumbnail.exe PICTURE RESULT.png
//
// The component lies beside the program with its manifest, which app.manifest names, so that nothing is registered. To use
// the one that is registered, leave app.manifest out of Thumbnail.csproj. Build with the word size of the component (Thumbnail.csproj).
using System;

static class Program
{
    // The values that are used here; the type library has the others.
    const int streamJPG = 129, resampleLanczos3 = 4, scaleDownAsNeeded = 1, gsclCCIR709 = 1;

    [STAThread]
    static int Main(string[] arguments)
    {
        if (arguments.Length != 2)
        {
            Console.WriteLine("Thumbnail.exe PICTURE RESULT.png");
            return 2;
        }
        // Without registration there is no name in the registry: the class is found by its identifier.
        var type = Type.GetTypeFromCLSID(new Guid("622f7da2-e8dc-46d6-b58a-48818f3b167d"), true);
        dynamic sheet = Activator.CreateInstance(type);
        sheet.Unattended = true;
        if (!sheet.LoadPicture_File(arguments[0])) return Fail(sheet);

        // What a member stores in an argument is passed by reference.
        int width = 0, height = 0;
        sheet.ScaleImage(160, 160, ref width, ref height, scaleDownAsNeeded);
        if (!sheet.Resample(width, height, resampleLanczos3)) return Fail(sheet);
        sheet.MakeGrayScale(gsclCCIR709);

        // Bytes out and in: arrays come as byte[], of two dimensions as byte[,].
        byte[] file = sheet.StreamOf(streamJPG, 85);
        if (file == null) return Fail(sheet);
        byte[] bits = sheet.DIBbits(as2dArray: false, asWordAligned: false, asBottomUp: false);
        Console.WriteLine($"{sheet.Width} x {sheet.Height}, {file.Length} bytes as JPEG, alpha {sheet.PixelAlpha(0, 0)} = {bits[3]}");

        dynamic other = Activator.CreateInstance(type);
        object stream = file;
        if (!other.LoadPicture_Stream(ref stream)) return Fail(other);
        return sheet.SaveToFile_PNG(arguments[1], PromptOverWrite: false) ? 0 : Fail(sheet);
    }

    static int Fail(dynamic sheet)
    {
        Console.WriteLine("failed: " + sheet.LastErrorText);
        return 1;
    }
}
// SPDX-License-Identifier: MIT
