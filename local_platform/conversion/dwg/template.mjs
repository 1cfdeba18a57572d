// SPDX-License-Identifier: MIT
// An empty drawing of R2000, from which every drawing that is written begins: its dictionaries, layouts and
// styles. Made once by the package @node-projects/acad-ts 3.2.0 (MIT):
//     new CadDocument(ACadVersion.AC1015), written by DwgWriter and packed by deflateRawSync.

import { inflateRawSync } from 'node:zlib';

const PACKED = [
  '7VaLT1NXGP9OaSkWgbaWqTwEBJSHZK0WcSrj3j6glbbea4ubYYqFtlqmgghbfKbiZcKUpSBM3UaC8bHRYTYSWFyMsyTXOBYXUCE+wiYaidNskS',
  'gkDJ2d915aZubiHzC/25uv5zu/3+9858s9D1ytkCsygbEINAgA0bPnQDDTRAjgCgJAV3kA8wCAJw0FKAWAoF2hAAyH3xEKwAcAgRUAdgLAqpbm',
  'VlPK0eqo4XX4UFHLUiP4PkQzQQYIAHw+nw8BZ0yMeQVwKIR5Afw9L9qZT5LB1K5CjLe0q1BKoOdF/MvYccmbhf2LU1Ja3vkpp0UjTmcxQzcbx9',
  'N7rl0r/irTW3z2YX/vzrjEv35d0la0a+MZ0+ZFRe0sSghx5wv6mrHC0tzk6WQ8ZpvGPxHscVOzg3G3LarJieFJPfNOORwOR8XKO6WMd9x95vF4',
  'XOzA4UEjXAaXEZZ/oPYOgZZ2hPCZKUSmi12l30prJBekmZJmqVbk8cArzFNqF0xTeVhrfQVWdOoUQTSleTyeNt7yt7FPrxHp6+q9o+kxT7n+uz',
  'mcD3JzPkI90SqWzeV1/TYYoero9Z7ekRXU9/W2cXZCjrcwm59WG1UQr5Py917hHyYTZFi/rl8mk0U8fPzkKa2hDbSFJuj36Hfp9TRG6+gWHKMF',
  'iGzDcSwuHOCEu6fmyO2DN2qHOi9d73F39vVd7+uqve71dtI/Dg64h91Dt+uODCcpFVZHsXzxwgzFkoUlGUpHlj2j2K6UZ1iVtuLiRVlKpT2rmI',
  'wnY8nZZBQZnePr9T32PfX5gn6QU0ODvISLq1v3Hc7raLzUWn+MPkO3jV/wDo4W3ev97mNmBtneinXL8patFi7NSQxtnSXXV4WDQcz0aEoxuSJW',
  'EX+6MAkMWzEAyHNOTzOW2eybiszl1hI7VgCrQuqq99Y+4qHaCdd+sR+nS52eRljL7RUv4upEPFQndeGVYWBoZEe4jzB5QsxEZyQYmBUGealIrv',
  'aGCfEZcoIgo3cYw8AoZTq0TgaZ2FUYBcaNzKekux9irrRusVkrbKr1IrfWINNiJqsETBw8lYFHK6IUs1N+nolMDh4A5DqFqu0G63Z7xQoc/u+G',
  'y+TER5ZAadqEqu2qTWUl778uDVuas1ujkGkTW5r7InXZlkrnlqqyqm2vq8NWx/i7CFaye4T2ASYfanjeYrdNrQeTu/aFAcEuwlx2Ec6zaz8DYg',
  'NTOH2bMA0vqXR+YMc4rYZJzSTsX1v7Ec7rsWP/kcdIjt/Hwh7ur87l98RLKUI0PumfmM2rQrqrq6tdkarn6XKbEZtuMn9iBhC/sGM7+bga12B8',
  'SZAA1s0PB1LG4toQYPKEpJo/9gC5AfM+n1dqYC/ShIz8yStci7HHRfu2kckzZfKQCZ+cZ3bEAxdG1IquHS/PFl3M4Q6Z0723jzJ2ZBi5J2nP4p',
  '2WvfE6qVAnXauhyKCc870PH4U0VFfXRTG57w8TAcli9Q8w+Z0NsYC/yZQg76QyoV/elnmuobljt7G7pr6pGyFN+b18MeAF7DY7rEy4yucLJN6B',
  'fD9JV8KS8Jru5p5/kBJ1fpLuuJ/km8VHKw7s9QJgznCX+IRMKdOOKkfpsaRUQZhAsjtWn12AhzK1KzLga1YWWNQE0UfOvEoUSCyNhFnczxDGlG',
  'PJGsuwVqllOZmKSIEkUm8k7YrICJZqNOhNWrNljUGr7mPoA2LikMQy8IZZQspYAT49plUWaDVNd6uUawT1kro1NT0na+o6miUn6y+fPPd9Tc9w',
  'OKtkVuMGrUFvtmjErFCjZYAwyxgl4i6bu63JQmvo5kxNNptLcqYgNnK3JDmMBC8VQk2nxJSMmkXFUPFUEpVCLaDklJJaQi0/FhwGKxqZ4mEelx',
  'gzgDguEHjABubc8gfwNDYQF0DgpWxAMoXgNGAqwGmEBygqTmPBVIDTmBugqDiNRVMBTiM7QFFzGssDCDWnsXAKwWkkTgU4jYxbYENfSFEtD0n+',
  '8zmaix7q0WER6tKjG4DK0CkhMqEYNJKLPucxv0NadBtDX4aiBNSajzoZ/2gFOjgNOdE3OLrJS1kPPNTHfG/zJ++4zN2WafMXTi5jm3898zjHXJ',
  '79V92/AQ==',
].join('');

export const emptyDrawing = () => inflateRawSync(Buffer.from(PACKED, 'base64'));
