#pragma once

#include <string_view>

/// What stands around the table of the page of camera types.
namespace zel::tool {

constexpr std::string_view kTypesPageHead =
    R"(# Camera types

Sizes in pixels; gain and shutter in the sensor's own units, for the shutter mostly lines. The
sub-sampling is the highest code: code k divides the picture's sides by 2 to the power k. "-" stands
for what a type leaves as its family has it, or does not offer. Written by `zelcam types --markdown`.

The last two columns hold the settings that a type carries to registers of its camera. *Documented* are
those whose registers the camera's documentation gives. The others' were *chosen here*: they work with
the simulated cameras and have to be compared with a camera before they are relied on. Each number in
`src/models/` says at its definition which of the two it is. [Peculiarities](#peculiarities) follow the
table.
)";

constexpr std::string_view kTypesPageTail =
    R"(
## Peculiarities

**Registers beyond the table.** Types 16 and 42 also tell the picture processor in the camera gamma,
saturation, brightness, contrast and hue as far as it has them, type 61 its monitor output the decoding,
colour and white balance: chosen here. So are, for all USB3T2 types, the bus address behind which the
sensor answers and the register of the focus drive.

**Values beyond a range.** USB 2.0 sensors take the bits that a documented register has and drop the rest;
what then lies outside the range has reached the sensor and is refused by the store. Where the register
was chosen here, nothing outside the range is sent. The other families clamp.

**Another program's settings.** Opening a camera or playing brings everything in the table back to what
the settings say, whatever another program left in the camera. Registers written by number stay in USB 3.0
and SATA cameras, which have no reset.

**Shutter of type 78.** Its range follows the readout: 2..4453 until the first `Play`, then 1..3335, and
1..1668 with summed lines. With each change, and with every `Play`, the exposure keeps its place in the
range, not its length: 1000 becomes 750 with the first `Play` and one line more with each further one.
Set the shutter after `Play` for an exact one. Types 75, 76, 79, 80, 81 and 83, which are read out alike,
keep range and exposure as they are set.

**Automatic exposure.** Types 89 and 98 keep the shutter in 80..2000 and the gain in 10..60, type 96 in
the ranges of the table. Type 97 has four shutters, each twice as long as the one before: it needs the
automatic gain (`aux-value4`) as well to come to its target.

**First two rows.** With Bayer decoding method 0 the first two rows of every picture are copies of rows
four and three, counted from 0, as sensors begin with rows that are not to be shown.

**Half a pixel.** Bayer decoding methods 1 and 2 make each pixel of the samples above it and to its left:
their pictures are shifted by half a pixel to the right and down against those of method 0.

**Dot filter.** It takes fine detail for defects. At its default threshold of 15 (it is off until
`dot-filter-enabled` is set), of vertical stripes around a mean of 128 this much of the contrast is left:

| stripes, of full scale | 3 pixels a period | 4 | 5 | 6 | 8 | 10 | 12 | 16 |
| --- | --- | --- | --- | --- | --- | --- | --- | --- |
| 128 +- 10 | 100 % | 100 % | 100 % | 100 % | 100 % | 100 % | 100 % | 100 % |
| 128 +- 20 | 100 % | 0 % | 60 % | 100 % | 100 % | 100 % | 100 % | 100 % |
| 128 +- 40 | 20 % | 0 % | 30 % | 19 % | 66 % | 100 % | 100 % | 100 % |
| 128 +- 80 | 19 % | 0 % | 12 % | 19 % | 38 % | 59 % | 66 % | 100 % |

A line of one or two pixels keeps 44 % of its height and leaves traces two pixels to its left and right;
an edge becomes four pixels wide. A higher threshold, or the filter off, keeps them.)";

}  // namespace zel::tool
