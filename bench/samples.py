# SPDX-License-Identifier: MIT

"""Takes samples until their median is known with enough certainty."""

import math
import statistics

# The median is settled when its uncertainty is at most this share of the median.
UNCERTAINTY = 0.1


def uncertainty(samples):
    """Half the 95 % confidence interval of the median, as a share of the median. Below six samples
    the interval is the range of all samples."""
    ordered = sorted(samples)
    middle, reach = len(ordered) / 2, 0.98 * math.sqrt(len(ordered))
    low = ordered[max(0, math.floor(middle - reach))]
    high = ordered[min(len(ordered) - 1, math.ceil(middle + reach))]
    return (high - low) / 2 / statistics.median(ordered)


def sample_until_settled(measure, min_count=20, max_count=80):
    """Calls `measure`, which returns one sample, until the median is settled, at least `min_count`
    and at most `max_count` times; returns the samples."""
    samples = []
    while len(samples) < min_count or (
            len(samples) < max_count and uncertainty(samples) > UNCERTAINTY):
        samples.append(measure())
    return samples


def describe(samples, unit, digits=2):
    """Describes the samples: their median as text, and their spread as text."""
    lower, _, upper = statistics.quantiles(samples, n=4)
    settled = "" if uncertainty(samples) <= UNCERTAINTY else ", not settled"
    return (f"{statistics.median(samples):.{digits}f} {unit}",
            f"half of {len(samples)} runs between {lower:.{digits}f} and {upper:.{digits}f} {unit}, "
            f"median ± {uncertainty(samples):.0%}{settled}")
