"""Samples that are taken until their median is known well enough."""

import math
import statistics

# The median is settled when, with a certainty of 95 %, it lies within this part of itself.
UNCERTAINTY = 0.1


def uncertainty(samples):
    """Half the range in which the median lies with a certainty of 95 %, as a part of the median. Of
    fewer than six samples it is the whole range."""
    ordered = sorted(samples)
    middle, reach = len(ordered) / 2, 0.98 * math.sqrt(len(ordered))
    low = ordered[max(0, math.floor(middle - reach))]
    high = ordered[min(len(ordered) - 1, math.ceil(middle + reach))]
    return (high - low) / 2 / statistics.median(ordered)


def until_settled(measure, fewest=20, most=80):
    """Calls `measure`, which answers a sample, until the median of the samples is settled, at most
    `most` times; the samples."""
    samples = []
    while len(samples) < fewest or (len(samples) < most and uncertainty(samples) > UNCERTAINTY):
        samples.append(measure())
    return samples


def described(samples, unit, digits=2):
    """The median of the samples, and how they are spread around it."""
    lower, _, upper = statistics.quantiles(samples, n=4)
    settled = "" if uncertainty(samples) <= UNCERTAINTY else ", not settled"
    return (f"{statistics.median(samples):.{digits}f} {unit}",
            f"half of {len(samples)} runs between {lower:.{digits}f} and {upper:.{digits}f} {unit}, "
            f"median ± {uncertainty(samples):.0%}{settled}")
