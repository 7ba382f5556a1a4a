package com.quill.inspect;

import java.util.HashMap;
import java.util.Map;

/** Names of the common tags, as TIFF 6.0 and EXIF give them. Numbers mean different things in different directories. */
final class ExifTags {
    static final int kOrientation = 0x0112;
    static final int kExifPointer = 0x8769;
    static final int kGpsPointer = 0x8825;
    static final int kInteropPointer = 0xa005;
    static final int kColorSpace = 0xa001;
    static final int kInteropIndex = 0x0001;
    static final int kStripOffsets = 0x0111;
    static final int kThumbnailOffset = 0x0201;
    static final int kThumbnailSize = 0x0202;

    /** IFD0, IFD1 and the EXIF directory. */
    static final Map<Integer, String> kImage = table("""
            0100 ImageWidth                  0101 ImageLength                 0102 BitsPerSample
            0103 Compression                 0106 PhotometricInterpretation   010e ImageDescription
            010f Make                        0110 Model                       0111 StripOffsets
            0112 Orientation                 0115 SamplesPerPixel             0116 RowsPerStrip
            0117 StripByteCounts             011a XResolution                 011b YResolution
            011c PlanarConfiguration         0128 ResolutionUnit              012d TransferFunction
            0131 Software                    0132 DateTime                    013b Artist
            013c HostComputer                013e WhitePoint                  013f PrimaryChromaticities
            0201 JPEGInterchangeFormat       0202 JPEGInterchangeFormatLength 0211 YCbCrCoefficients
            0212 YCbCrSubSampling            0213 YCbCrPositioning            0214 ReferenceBlackWhite
            4746 Rating                      8298 Copyright                   829a ExposureTime
            829d FNumber                     8769 ExifIFD                     8822 ExposureProgram
            8824 SpectralSensitivity         8825 GPSIFD                      8827 PhotographicSensitivity
            8828 OECF                        8830 SensitivityType             8831 StandardOutputSensitivity
            8832 RecommendedExposureIndex    8833 ISOSpeed                    8834 ISOSpeedLatitudeyyy
            8835 ISOSpeedLatitudezzz         9000 ExifVersion                 9003 DateTimeOriginal
            9004 DateTimeDigitized           9010 OffsetTime                  9011 OffsetTimeOriginal
            9012 OffsetTimeDigitized         9101 ComponentsConfiguration     9102 CompressedBitsPerPixel
            9201 ShutterSpeedValue           9202 ApertureValue               9203 BrightnessValue
            9204 ExposureBiasValue           9205 MaxApertureValue            9206 SubjectDistance
            9207 MeteringMode                9208 LightSource                 9209 Flash
            920a FocalLength                 9214 SubjectArea                 927c MakerNote
            9286 UserComment                 9290 SubSecTime                  9291 SubSecTimeOriginal
            9292 SubSecTimeDigitized         a000 FlashpixVersion             a001 ColorSpace
            a002 PixelXDimension             a003 PixelYDimension             a004 RelatedSoundFile
            a005 InteropIFD                  a20b FlashEnergy                 a20e FocalPlaneXResolution
            a20f FocalPlaneYResolution       a210 FocalPlaneResolutionUnit    a214 SubjectLocation
            a215 ExposureIndex               a217 SensingMethod               a300 FileSource
            a301 SceneType                   a302 CFAPattern                  a401 CustomRendered
            a402 ExposureMode                a403 WhiteBalance                a404 DigitalZoomRatio
            a405 FocalLengthIn35mmFilm       a406 SceneCaptureType            a407 GainControl
            a408 Contrast                    a409 Saturation                  a40a Sharpness
            a40b DeviceSettingDescription    a40c SubjectDistanceRange        a420 ImageUniqueID
            a430 CameraOwnerName             a431 BodySerialNumber            a432 LensSpecification
            a433 LensMake                    a434 LensModel                   a435 LensSerialNumber
            a460 CompositeImage              a500 Gamma                       c4a5 PrintImageMatching
            ea1c Padding
            """);

    static final Map<Integer, String> kGps = table("""
            00 GPSVersionID          01 GPSLatitudeRef        02 GPSLatitude           03 GPSLongitudeRef
            04 GPSLongitude          05 GPSAltitudeRef        06 GPSAltitude           07 GPSTimeStamp
            08 GPSSatellites         09 GPSStatus             0a GPSMeasureMode        0b GPSDOP
            0c GPSSpeedRef           0d GPSSpeed              0e GPSTrackRef           0f GPSTrack
            10 GPSImgDirectionRef    11 GPSImgDirection       12 GPSMapDatum           13 GPSDestLatitudeRef
            14 GPSDestLatitude       15 GPSDestLongitudeRef   16 GPSDestLongitude      17 GPSDestBearingRef
            18 GPSDestBearing        19 GPSDestDistanceRef    1a GPSDestDistance       1b GPSProcessingMethod
            1c GPSAreaInformation    1d GPSDateStamp          1e GPSDifferential       1f GPSHPositioningError
            """);

    static final Map<Integer, String> kInterop = table("""
            0001 InteroperabilityIndex    0002 InteroperabilityVersion
            1000 RelatedImageFileFormat   1001 RelatedImageWidth          1002 RelatedImageLength
            """);

    private ExifTags() {}

    private static Map<Integer, String> table(String text) {
        Map<Integer, String> names = new HashMap<>();
        String[] words = text.trim().split("\\s+");
        for (int i = 0; i < words.length; i += 2) names.put(Integer.parseInt(words[i], 16), words[i + 1]);
        return Map.copyOf(names);
    }
}
