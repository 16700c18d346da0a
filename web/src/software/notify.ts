import { toast } from '../kit/toast.tsx';
import { route } from '../shell/navigation.ts';

/** A toast, unless the software view is open: it shows itself how things end. */
export function notifyElsewhere(text: string, error: boolean) {
  if (route.get().view !== 'software') toast(text, { error });
}
