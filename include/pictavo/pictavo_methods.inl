// Every method of the interface table, in slot order, for hosts, bindings and tests that go through
// all of them. Define what shall become of a line, then include this file, once or several times:
//
//   #define PICTAVO_METHOD(slot, name, where, arguments) names[slot] = #name;
//   #define PICTAVO_RESERVED(slot, arguments) names[slot] = "Reserved" #slot;
//   #include "pictavo/pictavo_methods.inl"
//
// `where` says what a method works with: OBJECT (the object itself), CPU (the processor alone),
// MODULE (a sibling module, found at run time), SURFACE (the processor, on host surfaces), OPENCL
// or D3D11. `arguments` are their names in pictavo.h, in brackets; their types are those of
// &pictavo::IPictavo6::name. A macro that is not defined leaves its lines out; both are undefined
// again at the end.
#ifndef PICTAVO_METHOD
#define PICTAVO_METHOD(slot, name, where, arguments)
#endif
#ifndef PICTAVO_RESERVED
#define PICTAVO_RESERVED(slot, arguments)
#endif

PICTAVO_METHOD(0, DetectInstructionSet, OBJECT, ())
PICTAVO_METHOD(1, GetCPULevel, OBJECT, ())
PICTAVO_METHOD(2, BlendOverWithOpacityRamp, CPU,
               (dst, src, width, height, dstPitch, srcPitch, flip, opacityStart, opacityEnd))
PICTAVO_METHOD(3, BlendOverPacked, CPU, (dst, src, width, height))
PICTAVO_METHOD(4, BlendOverPitched, CPU, (dst, src, width, height, pitch))
PICTAVO_METHOD(5, BlendPremultipliedWithOpacityRamp, CPU,
               (dst, src, width, height, dstPitch, srcPitch, flip, opacityStart, opacityEnd))
PICTAVO_METHOD(6, BlendPremultipliedPacked, CPU, (dst, src, width, height))
PICTAVO_METHOD(7, BlendPremultipliedPitched, CPU, (dst, src, width, height, pitch))
PICTAVO_METHOD(8, CompositePremultipliedWithOpacityRamp, CPU,
               (dst, src, width, height, dstPitch, srcPitch, flip, opacityStart, opacityEnd))
PICTAVO_METHOD(9, CompositePremultipliedPitched, CPU, (dst, src, width, height, pitch))
PICTAVO_METHOD(10, CompositePremultipliedPacked, CPU, (dst, src, width, height))
PICTAVO_METHOD(11, BlendOverWithOpacity, CPU,
               (dst, src, width, height, dstPitch, srcPitch, opacity, backdrop))
PICTAVO_RESERVED(12, ())
PICTAVO_RESERVED(13, ())
PICTAVO_METHOD(14, ConvertRGBToYUVPixel, CPU, (r, g, b, y, u, v))
PICTAVO_METHOD(15, ConvertYUVToRGBPixel, CPU, (y, u, v, r, g, b))
PICTAVO_METHOD(16, UnpremultiplyPitched, CPU, (buffer, width, height, pitch))
PICTAVO_METHOD(17, UnpremultiplyPacked, CPU, (buffer, width, height))
PICTAVO_METHOD(18, PremultiplyPitched, CPU, (buffer, width, height, pitch))
PICTAVO_METHOD(19, PremultiplyPacked, CPU, (buffer, width, height))
PICTAVO_METHOD(20, ConvertBGRAToYUVA, CPU, (src, width, height, srcPitch, dst, dstPitch))
PICTAVO_METHOD(21, ConvertBGRAToYUVAPortable, CPU, (src, width, height, srcPitch, dst, dstPitch))
PICTAVO_RESERVED(22, ())
PICTAVO_RESERVED(23, ())
PICTAVO_RESERVED(24, ())
PICTAVO_RESERVED(25, ())
PICTAVO_RESERVED(26, ())
PICTAVO_RESERVED(27, ())
PICTAVO_RESERVED(28, ())
PICTAVO_METHOD(29, ResizeBox16AlphaWeighted, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch,
                forceOpaque))
PICTAVO_METHOD(30, ResizeBilinear16, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch, forceOpaque,
                fullSize))
PICTAVO_METHOD(31, ResizeBilinear7, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch))
PICTAVO_RESERVED(32, ())
PICTAVO_RESERVED(33, ())
PICTAVO_METHOD(34, ConvertRGBToYUV4Pixels, CPU, (pixels, y, u, v))
PICTAVO_METHOD(35, ConvertRGBToYUVPixels, CPU, (pixels, y, u, v))
PICTAVO_METHOD(36, BlendOverWithOpacityRampAndAlpha, CPU,
               (dst, src, width, height, dstPitch, srcPitch, opacity, backdrop, flip, opacityStart,
                opacityEnd))
PICTAVO_METHOD(37, BlendOverWithOpacityRampKeepAlpha, CPU,
               (dst, src, width, height, dstPitch, srcPitch, opacity, backdrop, flip, opacityStart,
                opacityEnd))
PICTAVO_RESERVED(38, ())
PICTAVO_RESERVED(39, ())
PICTAVO_RESERVED(40, ())
PICTAVO_RESERVED(41, ())
PICTAVO_METHOD(42, SetCPULevel, OBJECT, (level))
PICTAVO_METHOD(43, ComputeHistogram, CPU, (pixels, width, height, pitch, bins, binCount, selector))
PICTAVO_METHOD(44, ComputeLumaHistogram, CPU,
               (pixels, width, height, pitch, bins, binCount, selector))
PICTAVO_RESERVED(45, ())
PICTAVO_METHOD(46, ConvertBGRAToGray, CPU, (src, width, height, srcPitch, dst, dstPitch))
PICTAVO_RESERVED(47, ())
PICTAVO_METHOD(48, DrawRectOutline, CPU, (buffer, width, height, pitch, rect, colour))
PICTAVO_METHOD(49, SharpenPicture, CPU, (buffer, width, height, pitch, amount, threshold, radius))
PICTAVO_METHOD(50, ConvertYUVAToBGRA, CPU, (src, width, height, srcPitch, dst, dstPitch))
PICTAVO_METHOD(51, FillRectangle, CPU, (buffer, width, height, pitch, rect, colour))
PICTAVO_METHOD(52, FillRectangleSmooth, CPU,
               (buffer, width, height, pitch, left, top, right, bottom, colour))
PICTAVO_METHOD(53, AdjustLevels, CPU, (buffer, width, height, pitch, channels, param))
PICTAVO_METHOD(54, ConvertFrameToBGRA, CPU, (src, width, height, dst, dstPitch, format))
PICTAVO_METHOD(55, ResizeNearest32, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch))
PICTAVO_METHOD(56, GaussianBlur, CPU, (buffer, width, height, pitch, sigmaX, sigmaY, edges))
PICTAVO_METHOD(57, ResizeBox16, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch))
PICTAVO_METHOD(58, ResizeBilinear16KeepAlpha, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch, fullSize))
PICTAVO_METHOD(59, SetAlphaPlane, CPU, (pixels, plane, width, height))
PICTAVO_METHOD(60, ResizeFiltered, CPU, (src, dst, param))
PICTAVO_METHOD(61, ResizeFilteredRegion, CPU, (src, dst, rect, param))
PICTAVO_METHOD(62, ResizeNearestInRect, CPU,
               (dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch, rect))
PICTAVO_METHOD(63, MotionBlur, CPU, (src, dst, param))
PICTAVO_METHOD(64, GetMotionBlurDstSize, CPU, (src, dst, param, offsetX, offsetY))
PICTAVO_METHOD(65, FlipPicture, CPU, (src, dst, mode))
PICTAVO_METHOD(66, ApplyColorLut, CPU, (src, dst, param))
PICTAVO_METHOD(67, RotatePicture, CPU, (src, dst, param))
PICTAVO_METHOD(68, RotateD3D, D3D11, (device, context, dst, src, param))
PICTAVO_METHOD(69, PixelateRegion, CPU, (buffer, width, height, pitch, rect, block))
PICTAVO_METHOD(70, ApplyTransition, CPU, (dst, from, to, param))
PICTAVO_METHOD(71, ExtendBoundary, CPU, (image, border))
PICTAVO_METHOD(72, ConvolvePicture, CPU, (src, dst, param))
PICTAVO_METHOD(73, BlendLayer, CPU, (dst, src, param))
PICTAVO_METHOD(74, BlendLayerSubpixel, CPU, (dst, src, param))
PICTAVO_METHOD(75, CopyRectangle, CPU, (src, dst, rect))
PICTAVO_RESERVED(76, ())
PICTAVO_METHOD(77, FillSolidColor, CPU, (buffer, width, height, pitch, blue, green, red, alpha))
PICTAVO_METHOD(78, AdjustMatte, CPU, (picture, param))
PICTAVO_METHOD(79, SwirlPicture, CPU, (src, dst, param))
PICTAVO_METHOD(80, ApplyMatte, CPU, (picture, matte, mode))
PICTAVO_METHOD(81, TiltPicture, CPU, (src, dst, param))
PICTAVO_METHOD(82, ComputeMean, CPU, (buffer, width, height, mean))
PICTAVO_METHOD(83, FindThreshold, CPU, (values, count, index))
PICTAVO_METHOD(84, MeasurePicture, CPU, (buffer, width, height, pitch, channel, measure, result))
PICTAVO_METHOD(85, FindBounds, CPU,
               (buffer, width, height, pitch, channel, threshold, count, bounds))
PICTAVO_METHOD(86, ApplyChromaKey, CPU, (src, dst, keys, keyCount, format))
PICTAVO_METHOD(87, GaussianBlurBox3, CPU, (image, width, height, pitch, radius))
PICTAVO_METHOD(88, ConvertPictureFromRGB, MODULE,
               (src, width, height, srcPitch, dst, dstPitch, model, matrix, range))
PICTAVO_METHOD(89, ConvertPictureToRGB, MODULE,
               (src, width, height, srcPitch, dst, dstPitch, model, matrix, range))
PICTAVO_METHOD(90, ConvertColorFromRGB, MODULE,
               (r, g, b, first, second, third, model, matrix, range))
PICTAVO_METHOD(91, ConvertColorToRGB, MODULE, (first, second, third, r, g, b, model, matrix, range))
PICTAVO_METHOD(92, ConvertPixelFromRGB, MODULE, (pixel, first, second, third, model, matrix, range))
PICTAVO_METHOD(93, ConvertBGRAToFrame, CPU, (src, width, height, srcPitch, dst, format))
PICTAVO_METHOD(94, ExtractPlane, CPU, (src, width, height, srcPitch, dst, dstPitch, channel))
PICTAVO_METHOD(95, ConvertHSLToRGB, CPU, (hue, saturation, lightness, r, g, b))
PICTAVO_METHOD(96, BlendLayerScaled, CPU, (dst, src, param, rect))
PICTAVO_METHOD(97, CopySurface, SURFACE, (dst, src))
PICTAVO_METHOD(98, ExtendBoundaryOpenCL, OPENCL, (dst, border))
PICTAVO_METHOD(99, AdjustColor, CPU, (buffer, width, height, pitch, param))
PICTAVO_METHOD(100, TransformOpenCL, OPENCL, (dst, src, matrix))
PICTAVO_METHOD(101, ResizeSurface, SURFACE, (dst, src, param))
PICTAVO_METHOD(102, BilinearInterpolationOpenCL, OPENCL, (dst, src))
PICTAVO_METHOD(103, BoxBlurD3D, D3D11, (device, context, dst, src, radius))
PICTAVO_METHOD(104, FastBlurOpenCL, OPENCL, (dst, src, radiusX, radiusY))
PICTAVO_METHOD(105, MemsetColorOpenCL, OPENCL, (dst, colour))
PICTAVO_METHOD(106, ShuffleChannels, CPU, (dst, src, count, b, g, r, a))
PICTAVO_METHOD(107, ExtendBoundaryTransparent, CPU, (image, border))
PICTAVO_METHOD(108, D3DComputeOp, D3D11, (opCode, subMode, device, context, dst, src, param))
PICTAVO_METHOD(109, ExpandPlaneScaled, CPU, (src, width, height, srcPitch, dst, dstPitch, gain))
PICTAVO_METHOD(110, ExpandPlane, CPU, (src, width, height, srcPitch, dst, dstPitch))

#undef PICTAVO_METHOD
#undef PICTAVO_RESERVED
