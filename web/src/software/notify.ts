import { toast } from '../kit/toast.tsx';
import { route } from '../shell/navigation.ts';

/** Shows a toast unless the software view is open, which shows the result itself. */
export function notifyElsewhere(text: string, error: boolean) {
  if (route.get().view !== 'software') toast(text, { error });
}
