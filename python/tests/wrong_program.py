"""A program with errors that the type checker finds, each in a line of its own that is marked so."""
import tessarn

fit = tessarn.polyfit([1, 2], [1, 2], "1")  # wrong
fit.coefs  # wrong
tessarn.fit_surface([1], [2], [3])  # wrong
fit.coef = [1]  # wrong
tessarn.zeros([1, 2], lower=0)  # wrong
tessarn.polyfit([1, 2], [1, 2], 1, [1, 1])  # wrong
