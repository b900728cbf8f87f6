# A hand goes over the sensor: briefly, for some seconds, and rests on it for a while. Seconds, lux.
0     300
15    300
15.2  6
15.9  6
16.1  300
35    300
35.2  6
38    6
38.3  300
60    300
60.2  6
75    6
75.3  300
100   300
