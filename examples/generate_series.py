#!/usr/bin/env python3
"""Writes the example system's hourly year of synthetic series into examples/series/.

Run from anywhere: python3 examples/generate_series.py
The output is the same on every run (fixed seed); the CSV files are checked in.

Shapes (all hourly, 8760 steps, a non-leap year starting 1 January 00:00, Monday):
- AC load (kW): a village profile of a base load plus a morning peak (07-09 h) and an
  evening peak (18-22 h), scaled by a seasonal factor that is highest in mid-January and
  lowest in mid-July (+/-15 %), with 6 % random noise per hour.
- DC load (kW): a telecom load of about 4 kW with 3 % noise and a small daytime rise.
- Solar (kW per kW of PV rated capacity): clear-sky irradiance at 35 degrees north
  (solar declination, hour angle at mid-hour, an air-mass attenuation), times 0.9 for
  losses, times a clearness index: one draw per day from a three-state weather chain
  (clear, hazy, overcast) with hourly cloud flicker.
- Wind speed (m/s at hub height): Weibull with shape 2 and a scale of 6.5 m/s, stronger
  in winter and in the afternoon, made from an autocorrelated Gaussian process
  (hour-to-hour correlation 0.9) mapped through the Weibull quantile function.
- Grid: the scheduled tariff's rate index per hour (0 off-peak, 1 peak 17-21 h on
  weekdays, 2 weekend) and outages (1 = down): 12 outages of 2 to 9 hours at random times.
- Diesel schedule: -1 (forced off) for a maintenance day each quarter, otherwise 0.
"""

import math
import os
import random
from statistics import NormalDist

HOURS = 8760
SEED = 20240611
HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "series")


def seasonal(day, peak_day, amplitude):
    return 1.0 + amplitude * math.cos(2.0 * math.pi * (day - peak_day) / 365.0)


def loads(rng):
    ac, dc = [], []
    for t in range(HOURS):
        day, hour = divmod(t, 24)
        shape = 0.45
        shape += 0.35 * math.exp(-((hour - 7.5) ** 2) / 2.0)
        shape += 0.55 * math.exp(-((hour - 19.5) ** 2) / 3.0)
        shape += 0.10 * (1 if 9 <= hour <= 16 else 0)
        kw = 60.0 * shape * seasonal(day, 15, 0.15) * (1.0 + rng.gauss(0.0, 0.06))
        ac.append(max(2.0, kw))
        dc.append(max(0.5, (4.0 + (0.6 if 8 <= hour <= 18 else 0.0)) * (1.0 + rng.gauss(0.0, 0.03))))
    return ac, dc


def solar(rng):
    latitude = math.radians(35.0)
    states = {"clear": (0.92, 0.03), "hazy": (0.7, 0.1), "overcast": (0.3, 0.12)}
    move = {"clear": [0.7, 0.2, 0.1], "hazy": [0.35, 0.4, 0.25], "overcast": [0.3, 0.35, 0.35]}
    weather = "clear"
    values = []
    for day in range(365):
        weather = rng.choices(["clear", "hazy", "overcast"], move[weather])[0]
        mean, spread = states[weather]
        declination = math.radians(23.45) * math.sin(2.0 * math.pi * (284 + day + 1) / 365.0)
        for hour in range(24):
            hour_angle = math.radians(15.0 * (hour + 0.5 - 12.0))
            cos_zenith = (math.sin(latitude) * math.sin(declination)
                          + math.cos(latitude) * math.cos(declination) * math.cos(hour_angle))
            if cos_zenith <= 0.01:
                values.append(0.0)
                continue
            clear_sky = 1.098 * cos_zenith * math.exp(-0.057 / cos_zenith)  # kW/m2
            clearness = min(1.0, max(0.05, rng.gauss(mean, spread)))
            values.append(max(0.0, min(1.0, 0.9 * clear_sky * clearness)))
    return values


def wind(rng):
    shape, scale, rho = 2.0, 6.5, 0.9
    normal = NormalDist()
    z = 0.0
    values = []
    for t in range(HOURS):
        day, hour = divmod(t, 24)
        z = rho * z + math.sqrt(1.0 - rho * rho) * rng.gauss(0.0, 1.0)
        u = min(max(normal.cdf(z), 1e-9), 1.0 - 1e-9)
        c = scale * seasonal(day, 20, 0.2) * (1.0 + 0.12 * math.sin(2.0 * math.pi * (hour - 9) / 24.0))
        values.append(c * (-math.log(1.0 - u)) ** (1.0 / shape))
    return values


def grid(rng):
    rate, outage = [], [0] * HOURS
    for t in range(HOURS):
        day, hour = divmod(t, 24)
        weekend = day % 7 in (5, 6)
        rate.append(2 if weekend else (1 if 17 <= hour < 21 else 0))
    for _ in range(12):
        start = rng.randrange(HOURS - 10)
        for t in range(start, start + rng.randint(2, 9)):
            outage[t] = 1
    return rate, outage


def diesel_schedule(rng):
    schedule = [0] * HOURS
    for quarter in range(4):
        day = quarter * 91 + rng.randrange(20, 70)
        for t in range(day * 24, day * 24 + 24):
            schedule[t] = -1
    return schedule


def write(name, header, columns, formats):
    path = os.path.join(OUT, name)
    with open(path, "w", newline="\n") as f:
        f.write("# Written by examples/generate_series.py (seed %d); one line per hour of the year.\n" % SEED)
        f.write(",".join(header) + "\n")
        for t in range(HOURS):
            f.write(",".join([str(t)] + [fmt % col[t] for fmt, col in zip(formats, columns)]) + "\n")


def main():
    os.makedirs(OUT, exist_ok=True)
    rng = random.Random(SEED)
    ac, dc = loads(rng)
    sun = solar(rng)
    speed = wind(rng)
    rate, outage = grid(rng)
    schedule = diesel_schedule(rng)
    write("loads.csv", ["hour", "ac_load_kw", "dc_load_kw"], [ac, dc], ["%.3f", "%.3f"])
    write("weather.csv", ["hour", "solar_per_unit", "wind_speed_m_s"], [sun, speed], ["%.4f", "%.3f"])
    write("grid.csv", ["hour", "rate_index", "outage"], [rate, outage], ["%d", "%d"])
    write("diesel_schedule.csv", ["hour", "schedule"], [schedule], ["%d"])


if __name__ == "__main__":
    main()
