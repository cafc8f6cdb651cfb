def can_run(recipe):
    return True
